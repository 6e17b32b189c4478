// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/numbers.h"

#include <nlohmann/json.hpp>

#include <memory>

namespace korva {

namespace {

struct Arguments {
    std::string input;
    std::string output;
    InputOptions inputOptions;
};

ExitCode convert(const Arguments& arguments, const Console& console) {
    const std::filesystem::path output = pathOf(arguments.output);
    static_cast<void>(fileKindOf(output));
    Scene scene;
    std::size_t vertices = 0;
    std::size_t triangles = 0;
    {
        ProgressBar bar = console.progress({{"reading", 2}, {"writing", 1}});
        scene = loadScene(pathOf(arguments.input), arguments.inputOptions, followBytes(bar, 0));
        vertices = scene.vertexCount();
        triangles = scene.triangleCount();
        const std::string loss = saveScene(output, scene, followBytes(bar, 1));
        if (!loss.empty()) scene.notes.push_back(loss);
    }
    console.say(scene.notes);
    if (console.json) {
        printJson({{"output",
                    {{"path", arguments.output}, {"vertices", vertices}, {"triangles", triangles}}},
                   {"notes", scene.notes}});
    } else {
        std::printf("%s: %s vertices, %s triangles.\n", arguments.output.c_str(),
                    withCommas(vertices).c_str(), withCommas(triangles).c_str());
    }
    return ExitCode::Done;
}

}  // namespace

void addConvert(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("convert", "Convert a mesh to another format");
    command->add_option("IN", arguments->input, "The mesh to convert")->required();
    command->add_option("OUT", arguments->output, "Where it goes; its suffix decides the format")
        ->required();
    addInputOptions(*command, arguments->inputOptions);
    finishCommand(*command, chosen, arguments, convert, "korva convert part.stl part.ply");
}

}  // namespace korva
