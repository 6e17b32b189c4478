// SPDX-License-Identifier: MIT
#include "korva/files/off/off_writer.h"

#include "korva/io/output_file.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace korva {

namespace {

/// A line of text under construction, long enough for ten numbers.
class Line {
public:
    template <typename Number>
    void add(Number value) {
        if (end_ != text_) *end_++ = ' ';
        end_ = std::to_chars(end_, text_ + sizeof text_ - 1, value).ptr;
    }
    void writeTo(OutputFile& file) {
        *end_++ = '\n';
        file.write(std::string_view(text_, static_cast<std::size_t>(end_ - text_)));
        end_ = text_;
    }

private:
    char text_[256];
    char* end_ = text_;
};

}  // namespace

void writeOff(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress) {
    OutputFile file(path, progress);
    const bool hasColors = !mesh.colors.empty();
    // If no number is above 1, readers take 1 for the brightest value.
    const bool areDark =
        std::all_of(mesh.colors.begin(), mesh.colors.end(), [](auto byte) { return byte <= 1; });
    file.write(hasColors ? "COFF\n" : "OFF\n");
    Line line;
    line.add(mesh.vertexCount());
    line.add(mesh.triangleCount());
    line.add(0);
    line.writeTo(file);
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) {
        for (std::size_t axis = 0; axis < 3; ++axis)
            line.add(mesh.positions[3 * i + axis]);
        for (std::size_t channel = 0; hasColors && channel < 4; ++channel) {
            const std::uint8_t byte = mesh.colors[4 * i + channel];
            if (areDark)
                line.add(static_cast<float>(byte) / 255.0F);
            else
                line.add(unsigned{byte});
        }
        line.writeTo(file);
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        line.add(3);
        for (std::size_t corner = 0; corner < 3; ++corner)
            line.add(mesh.triangles[i + corner]);
        line.writeTo(file);
    }
    file.commit();
}

}  // namespace korva
