// SPDX-License-Identifier: MIT
#include "korva/picture/png.h"

#include "korva/interrupt.h"
#include "korva/io/output_file.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <unordered_set>
#include <utility>

namespace korva {

namespace {

/// The memory of one call of the PNG writer, which does not expect failures: they leave it as
/// exceptions, and the arena frees what it had allocated.
class Arena {
public:
    Arena() = default;
    ~Arena() {
        for (void* block : blocks_)
            std::free(block);
    }
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    void* allocate(std::size_t byteCount) {
        std::unique_ptr<void, decltype(&std::free)> block(std::malloc(byteCount), &std::free);
        if (!block) throw std::bad_alloc();
        blocks_.insert(block.get());
        return block.release();
    }
    void* resize(void* block, std::size_t byteCount) {
        if (block == nullptr) return allocate(byteCount);
        auto known = blocks_.extract(block);
        void* moved = std::realloc(block, byteCount);
        if (moved != nullptr) known.value() = moved;
        blocks_.insert(std::move(known));
        if (moved == nullptr) throw std::bad_alloc();
        return moved;
    }
    void release(void* block) {
        blocks_.erase(block);
        std::free(block);
    }

private:
    std::unordered_set<void*> blocks_;
};

thread_local Arena* arena = nullptr;

/// The writer moves memory all the time, so this is where it can be stopped.
void moveUnlessInterrupted(void* to, const void* from, std::size_t byteCount) {
    throwIfInterrupted();
    std::memmove(to, from, byteCount);
}

}  // namespace

}  // namespace korva

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#define STBIW_MALLOC(byteCount) korva::arena->allocate(static_cast<std::size_t>(byteCount))
#define STBIW_REALLOC(block, byteCount)                                                            \
    korva::arena->resize(block, static_cast<std::size_t>(byteCount))
#define STBIW_FREE(block) korva::arena->release(block)
#define STBIW_MEMMOVE(to, from, byteCount)                                                         \
    korva::moveUnlessInterrupted(to, from, static_cast<std::size_t>(byteCount))
#include "korva/picture/quiet_stb.h"

namespace korva {

void writePng(const std::filesystem::path& path, const Image& image) {
    OutputFile file(path);
    Arena memory;
    arena = &memory;
    const auto write = [](void* context, void* bytes, int byteCount) {
        static_cast<OutputFile*>(context)->write(bytes, static_cast<std::size_t>(byteCount));
    };
    const auto width = static_cast<int>(image.width);
    const auto channels = static_cast<int>(image.channels);
    stbi_write_png_to_func(write, &file, width, static_cast<int>(image.height), channels,
                           image.pixels.data(), width * channels);
    file.commit();
}

}  // namespace korva
