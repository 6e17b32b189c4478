// SPDX-License-Identifier: MIT
//
// What the programs share: yardstick_NAME IN.obj TRIANGLES OUT.obj [VARIANT] simplifies a mesh of
// triangles and prints the processor time of the simplification alone.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace yardstick {

struct Mesh {
    std::vector<float> positions;          // three per vertex
    std::vector<std::uint32_t> triangles;  // three vertices each

    [[nodiscard]] std::size_t vertexCount() const { return positions.size() / 3; }
    [[nodiscard]] std::size_t triangleCount() const { return triangles.size() / 3; }
};

inline Mesh readObj(const char* path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error(std::string("cannot read ") + path);
    Mesh mesh;
    for (std::string line; std::getline(file, line);) {
        char* rest = line.data() + 1;
        if (line.rfind("v ", 0) == 0) {
            for (int i = 0; i < 3; ++i)
                mesh.positions.push_back(std::strtof(rest, &rest));
        } else if (line.rfind("f ", 0) == 0) {
            for (int i = 0; i < 3; ++i) {
                mesh.triangles.push_back(
                    static_cast<std::uint32_t>(std::strtoul(rest, &rest, 10) - 1));
                while (*rest != ' ' && *rest != '\0')
                    ++rest;
            }
        }
    }
    return mesh;
}

inline void writeObj(const char* path, const Mesh& mesh) {
    std::FILE* const file = std::fopen(path, "w");
    if (file == nullptr) throw std::runtime_error(std::string("cannot write ") + path);
    const std::vector<float>& p = mesh.positions;
    for (std::size_t i = 0; i < p.size(); i += 3) {
        std::fprintf(file, "v %.9g %.9g %.9g\n", static_cast<double>(p[i]),
                     static_cast<double>(p[i + 1]), static_cast<double>(p[i + 2]));
    }
    const std::vector<std::uint32_t>& t = mesh.triangles;
    for (std::size_t i = 0; i < t.size(); i += 3)
        std::fprintf(file, "f %u %u %u\n", t[i] + 1, t[i + 1] + 1, t[i + 2] + 1);
    std::fclose(file);
}

/// The processor time that work() takes, in seconds.
template <typename Work>
double secondsOf(Work work) {
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

/// simplify(mesh, triangles, variant, seconds) returns the simplified mesh and sets the time.
template <typename Simplify>
int run(int argc, char** argv, Simplify simplify) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: %s IN.obj TRIANGLES OUT.obj [VARIANT]\n", argv[0]);
        return 1;
    }
    try {
        const std::string_view variant = argc > 4 ? argv[4] : "";
        double seconds = 0;
        const Mesh result =
            simplify(readObj(argv[1]), std::strtoul(argv[2], nullptr, 10), variant, seconds);
        writeObj(argv[3], result);
        std::printf("cpu=%.4f vertices=%zu triangles=%zu\n", seconds, result.vertexCount(),
                    result.triangleCount());
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s: %s\n", argv[0], fault.what());
        return 1;
    }
    return 0;
}

}  // namespace yardstick
