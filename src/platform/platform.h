// SPDX-License-Identifier: MIT
//
// The only interface to the operating system. posix.cpp and windows.cpp each implement all of it,
// and the build picks one of them.
//
// Paths and texts are zero-terminated UTF-8 on every system. On Windows, text that is not valid
// UTF-8 is read in the system's own code page; elsewhere a path is taken byte for byte. A null or
// empty path names nothing: every call with one fails. Only a failed allocation throws. All
// functions may be called from any thread; a std::FILE* is for one thread at a time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace korvalite::core::platform {

// Opens a file with a mode of std::fopen. Null on failure. Never opens a folder, in any mode.
std::FILE* openFile(const char* path, const char* mode);

// Creates a new file and opens it as "wb+" does. Null if anything of that name exists already: if
// two processes ask for the same path, only one gets it.
std::FILE* createExclusively(const char* path);

// 64-bit std::fseek and std::ftell: `whence` is SEEK_SET, SEEK_CUR or SEEK_END; tell gives -1 on
// failure, as for a stream that cannot seek. REQUIRES: file is not null.
bool seek(std::FILE* file, std::int64_t offset, int whence);
std::int64_t tell(std::FILE* file);

// Whether the path names anything at all, including a folder.
bool exists(const char* path);

// Whether the path names a regular file. Follows symbolic links.
bool isRegularFile(const char* path);

// Removes a file, never a folder. False if it does not exist or cannot be removed.
bool deleteFile(const char* path);

// The current folder; empty if it cannot be read or is longer than 512 bytes.
std::string currentDirectory();

// Shows a message to the user and, where there is a desktop, waits for OK. Elsewhere it prints one
// line on standard error: caption, tab, text, with each newline in them written as "\n". Null
// counts as an empty text.
void messageBox(const char* caption, const char* text);

// The monotonic high-resolution counter and its ticks per second. False, with the result untouched,
// if the system has none.
bool counterFrequency(std::int64_t& ticksPerSecond);
bool counterValue(std::int64_t& ticks);

// Monotonic real time in milliseconds since a fixed point before the first call.
std::int64_t clockMilliseconds();

// Sleeps for at least the given time; returns at once for zero or less.
void sleepMilliseconds(int milliseconds);

// The bytes of memory that programs can take now without swapping, within the limit of a container
// on Linux; 0 if the system does not say.
std::uint64_t availableMemory();

// What the user typed after the program's name. On Windows this ignores the arguments and cuts the
// raw command line (see command_line.h), which keeps blanks and quotes as typed; elsewhere it is
// the single argument unchanged, or several arguments joined with one blank between them.
std::string commandTail(int argc, char** argv);

}  // namespace korvalite::core::platform
