// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/heat_colors.h"
#include "korva/numbers.h"
#include "korva/picture/draw_picture.h"
#include "korva/picture/picture_size.h"
#include "korva/picture/png.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <memory>

namespace korva {

namespace {

struct Arguments {
    std::vector<std::string> files;  // one or two meshes, then the picture
    std::string size = "1600x900";
    std::string view = "30,18";
    std::string upAxis = "y";
    std::string background = "light";
    bool smooth = false;
    bool wireframe = false;
    bool colors = true;
    bool errors = false;
    int threads = 0;  // 0 means all
};

const std::map<std::string, Background> kBackgrounds{
    {"light", Background::Light},
    {"white", Background::White},
    {"dark", Background::Dark},
    {"transparent", Background::Transparent},
};

/// Throws Error(BadOption) if an argument is out of its range.
PictureSettings settingsOf(const Arguments& arguments) {
    PictureSettings settings;
    const PictureSize size = parsePictureSize(arguments.size);
    settings.width = size.width;
    settings.height = size.height;
    settings.view = parseView(arguments.view);
    settings.upAxis = arguments.upAxis == "z" ? UpAxis::Z : UpAxis::Y;
    settings.background = kBackgrounds.at(arguments.background);
    settings.smooth = arguments.smooth;
    settings.wireframe = arguments.wireframe;
    settings.threads = threadCount(arguments.threads);
    return settings;
}

struct Drawn {
    std::string path;
    PictureSettings settings;
    std::vector<korvalite::Mesh> meshes;
    std::vector<std::string> notes;
    double largestError = 0;  // what is red, if errors are shown
};

/// Colours each of two meshes by the distance from the other.
void paintErrors(Drawn& drawn, const korvalite::Monitor& monitor) {
    if (drawn.meshes.size() != 2)
        throw korvalite::Error(korvalite::ErrorCode::BadOption,
                               "--errors needs two meshes, which it compares.");
    std::vector<std::vector<float>> distances;
    for (std::size_t i = 0; i < 2; ++i) {
        const korvalite::Surface other(drawn.meshes[1 - i].view(), monitor);
        distances.push_back(korvalite::vertexDistances(drawn.meshes[i].view(), other,
                                                       drawn.settings.threads, monitor));
        drawn.largestError =
            std::max(drawn.largestError, largestDistance(drawn.meshes[i], distances[i]));
    }
    for (std::size_t i = 0; i < 2; ++i)
        paintByDistance(drawn.meshes[i], distances[i], drawn.largestError);
}

void print(const Arguments& arguments, const Console& console, const Drawn& drawn) {
    console.say(drawn.notes);
    if (!console.json) {
        std::printf("%s: %zu x %zu pixels.\n", drawn.path.c_str(), drawn.settings.width,
                    drawn.settings.height);
        if (arguments.errors)
            std::printf("Blue is 0, red is %s.\n", withDigits(drawn.largestError).c_str());
        return;
    }
    nlohmann::json inputs = nlohmann::json::array();
    for (std::size_t i = 0; i < drawn.meshes.size(); ++i)
        inputs.push_back({{"path", arguments.files[i]},
                          {"vertices", drawn.meshes[i].vertexCount()},
                          {"triangles", drawn.meshes[i].triangleCount()}});
    nlohmann::json result = {
        {"inputs", inputs},
        {"output",
         {{"path", drawn.path},
          {"width", drawn.settings.width},
          {"height", drawn.settings.height}}},
        {"notes", drawn.notes},
    };
    if (arguments.errors) result["largestError"] = drawn.largestError;
    printJson(result);
}

ExitCode picture(const Arguments& arguments, const Console& console) {
    Drawn drawn{arguments.files.back(), settingsOf(arguments), {}, {}};
    requireSuffix(pathOf(drawn.path), ".png", "A picture is a .png file");
    InputOptions shown;
    shown.colors = arguments.colors;
    shown.mask = false;
    shown.uvs = false;
    {
        ProgressBar bar = console.progress(
            {{"reading", 1}, {"reading", 1}, {"measuring", 1}, {"drawing", 1}, {"writing", 1}});
        for (std::size_t i = 0; i + 1 < arguments.files.size(); ++i)
            drawn.meshes.push_back(
                loadAsItIs(arguments.files[i], shown, drawn.notes, followBytes(bar, i)));
        if (arguments.errors) paintErrors(drawn, followWork(bar, 2));
        const Image image = drawPicture(drawn.meshes, drawn.settings, followBytes(bar, 3));
        bar.show(4, 0, 1);
        writePng(pathOf(drawn.path), image);
    }
    print(arguments, console, drawn);
    return ExitCode::Done;
}

void addLookOptions(CLI::App& command, Arguments& arguments) {
    command
        .add_option("--view", arguments.view,
                    "front, back, left, right, top, bottom, iso, or how far to go to the right "
                    "around the mesh and above it, in degrees: 30,18")
        ->capture_default_str();
    command.add_option("--up", arguments.upAxis, "Which axis of the mesh points up: y or z")
        ->check(CLI::IsMember({"y", "z"}))
        ->capture_default_str();
    command.add_option("--background", arguments.background, "light, white, dark or transparent")
        ->check(CLI::IsMember({"light", "white", "dark", "transparent"}))
        ->capture_default_str();
    command.add_flag("--smooth,!--flat", arguments.smooth,
                     "Shade smoothly across edges that are not sharp, or show the facets, which "
                     "is the default");
    command.add_flag("--wireframe", arguments.wireframe, "Draw the edges of the triangles");
    CLI::Option* plain =
        command.add_flag("!--no-colors", arguments.colors, "Leave the colours of the mesh out");
    command
        .add_flag("--errors", arguments.errors,
                  "Colour two meshes by their distance from each other, from blue (0) to red (the "
                  "largest)")
        ->excludes(plain);
}

}  // namespace

void addPicture(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(
        "picture", "Draw a mesh, or two side by side, as they look from the same place");
    command->add_option("IN [IN2] OUT", arguments->files, "One or two meshes, and the .png file")
        ->required()
        ->expected(2, 3);
    command
        ->add_option("--size", arguments->size, "Width and height in pixels, each from 16 to 16384")
        ->capture_default_str();
    addLookOptions(*command, *arguments);
    addThreads(*command, arguments->threads, "The picture does not depend on it");
    finishCommand(*command, chosen, arguments, picture,
                  "korva picture scan.ply scan-small.ply before-after.png");
}

}  // namespace korva
