// SPDX-License-Identifier: MIT
#include "korva/files/off/off_writer.h"

#include "korva/files/text_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace korva {

void writeOff(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress) {
    OutputFile file(path, progress);
    const bool hasColors = !mesh.colors.empty();
    // If no number is above 1, readers take 1 for the brightest value.
    const bool areDark =
        std::all_of(mesh.colors.begin(), mesh.colors.end(), [](auto byte) { return byte <= 1; });
    file.write(hasColors ? "COFF\n" : "OFF\n");
    file.write(std::to_string(mesh.vertexCount()) + " " + std::to_string(mesh.triangleCount()) +
               " 0\n");
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) {
        TextLine line;
        const float* position = &mesh.positions[3 * i];
        line.add(position[0]);
        line.add(' ', position[1]);
        line.add(' ', position[2]);
        for (std::size_t channel = 0; hasColors && channel < 4; ++channel) {
            const std::uint8_t byte = mesh.colors[4 * i + channel];
            if (areDark)
                line.add(' ', static_cast<float>(byte) / 255.0F);
            else
                line.add(' ', unsigned{byte});
        }
        line.writeTo(file);
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        TextLine line("3");
        for (std::size_t corner = 0; corner < 3; ++corner)
            line.add(' ', mesh.triangles[i + corner]);
        line.writeTo(file);
    }
    file.commit();
}

}  // namespace korva
