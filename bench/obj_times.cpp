// SPDX-License-Identifier: MIT
#include "obj_times.h"

#include "best_time.h"
#include "bumpy_torus.h"
#include "formats/obj_writer.h"
#include "mesh/dmesh.h"
#include "platform/file.h"
#include "platform/platform.h"
#include "support/obj_by_printf.h"
#include "support/scratch_folder.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace korvalite::core::bench {

namespace {

constexpr int kTurns = 3;
constexpr std::size_t kChunk = std::size_t{1} << 20U;

struct ObjPaths {
    std::string byPrintf;
    std::string bySaveObj;
    std::string copy;

    // Each turn writes new files, because truncating an old one takes the system time.
    void deleteAll() const {
        for (const std::string* path : {&byPrintf, &bySaveObj, &copy})
            platform::deleteFile(path->c_str());
    }
};

bool writeByPrintf(const std::string& path, const DMesh& mesh) {
    std::FILE* const file = platform::openFile(path.c_str(), "w");
    if (file == nullptr) return false;
    test::writeObjByPrintf(file, mesh);
    return std::fclose(file) == 0;
}

// Measures the cost of the disk alone: reads and writes the finished file in large pieces.
bool copyFile(const std::string& from, const std::string& to) {
    platform::File source = platform::File::open(from.c_str(), "rb");
    platform::File target = platform::File::open(to.c_str(), "wb");
    std::string chunk(kChunk, '\0');
    while (const std::size_t count = source.read(chunk.data(), chunk.size()))
        target.write(chunk.data(), count);
    return target.close();
}

// The size of both files if they are identical, else -1.
std::int64_t sizeIfSame(const std::string& left, const std::string& right) {
    std::array<platform::File, 2> files{platform::File::open(left.c_str(), "rb"),
                                        platform::File::open(right.c_str(), "rb")};
    std::array<std::string, 2> chunks{std::string(kChunk, '\0'), std::string(kChunk, '\0')};
    std::int64_t size = 0;
    while (true) {
        const std::size_t count = files[0].read(chunks[0].data(), kChunk);
        if (files[1].read(chunks[1].data(), kChunk) != count) return -1;
        if (std::memcmp(chunks[0].data(), chunks[1].data(), count) != 0) return -1;
        if (count == 0) return size;
        size += static_cast<std::int64_t>(count);
    }
}

bool printRow(const char* name, const DMesh& mesh, const ObjPaths& paths) {
    BestTime byPrintf;
    BestTime bySaveObj;
    BestTime copy;
    bool good = true;
    for (int turn = 0; turn < kTurns; ++turn) {
        paths.deleteAll();
        byPrintf.measure([&] { good = writeByPrintf(paths.byPrintf, mesh) && good; });
        bySaveObj.measure(
            [&] { good = saveObj(paths.bySaveObj.c_str(), mesh, ObjColorMode::None) && good; });
        copy.measure([&] { good = copyFile(paths.bySaveObj, paths.copy) && good; });
    }
    const std::int64_t size = sizeIfSame(paths.byPrintf, paths.bySaveObj);
    std::printf("mesh=%s bytes=%lld printf=%.4f saveObj=%.4f copy=%.4f\n", name,
                static_cast<long long>(size), byPrintf.seconds(), bySaveObj.seconds(),
                copy.seconds());
    return good && size > 0;
}

// One UV per vertex.
void addUVs(DMesh& mesh) {
    for (const VertexRecord& vertex : mesh.vertices)
        mesh.coordsUV.push_back({vertex.x * 0.25F + 0.5F, vertex.y * 0.25F + 0.5F});
    mesh.indicesUV = mesh.triangles;
}

}  // namespace

bool printObjTimes(std::int32_t triangles) {
    const test::ScratchFolder folder;
    const ObjPaths paths{folder / u8"printf.obj", folder / u8"saveObj.obj", folder / u8"copy.obj"};
    DMesh mesh;
    makeBumpyTorus(mesh, triangles);
    const bool isPlainGood = printRow("plain", mesh, paths);
    addUVs(mesh);
    return printRow("UVs", mesh, paths) && isPlainGood;
}

}  // namespace korvalite::core::bench
