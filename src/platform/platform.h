// SPDX-License-Identifier: MIT
//
// The one interface to the operating system. posix.cpp and windows.cpp each implement all of it,
// and the build picks one of them.
//
// Paths and texts are zero-terminated UTF-8 on every system. On Windows, one that is not valid
// UTF-8 is read in the system's own code page; elsewhere a path is the bytes that it is. A null or
// empty path names nothing: every call with one fails. Nothing here throws but for a failed
// allocation. All functions may be called from any thread; a std::FILE* is used by one thread at a
// time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace korvalite::platform {

// Opens a file with a mode of std::fopen. Null on failure. A folder never opens, in no mode.
std::FILE* openFile(const char* path, const char* mode);

// Creates a new file and opens it as "wb+" does. Null if anything of that name exists already, so
// that of two processes that ask for one path only one gets it.
std::FILE* createExclusively(const char* path);

// 64-bit std::fseek and std::ftell: `whence` is SEEK_SET, SEEK_CUR or SEEK_END; tell gives -1 on
// failure, as for a stream that cannot seek. REQUIRES: file is not null.
bool seek(std::FILE* file, std::int64_t offset, int whence);
std::int64_t tell(std::FILE* file);

// Whether the path names anything at all, a folder included.
bool exists(const char* path);

// Whether the path names a regular file, through symbolic links.
bool isRegularFile(const char* path);

// Removes a file, never a folder. False if it was not there or could not be removed.
bool deleteFile(const char* path);

// The current folder; empty if it cannot be read or is longer than 512 bytes.
std::string currentDirectory();

// Tells the user something and, where there is a desktop, waits for OK. Elsewhere it is one line on
// standard error: caption, tab, text, with each newline inside them written as "\n". Null stands
// for an empty text.
void messageBox(const char* caption, const char* text);

// The high-resolution counter, which only ever grows, and its ticks per second. False, with the
// result untouched, if the system has none.
bool counterFrequency(std::int64_t& ticksPerSecond);
bool counterValue(std::int64_t& ticks);

// Elapsed real time in 1/1000 second since a fixed point before the first call. Never runs back.
std::int64_t clockMilliseconds();

// Sleeps at least so long; returns at once for zero or less.
void sleepMilliseconds(int milliseconds);

// What the user put behind the program's name. On Windows the arguments are ignored and the raw
// command line is cut (see command_line.h), with blanks and quotes as they were typed; elsewhere
// it is the one argument unchanged, or several joined by one blank each.
std::string commandTail(int argc, char** argv);

}  // namespace korvalite::platform
