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
        scene = loadScene(pathOf(arguments.input), arguments.inputOptions, followReading(bar, 0));
        vertices = scene.vertexCount();
        triangles = scene.triangleCount();
        bar.show(1, 0, 1);
        const std::string loss = saveScene(output, scene);
        if (!loss.empty()) scene.notes.push_back(loss);
    }
    for (const std::string& note : scene.notes)
        console.say(note);
    if (console.json) {
        const nlohmann::json result = {
            {"output",
             {{"path", arguments.output}, {"vertices", vertices}, {"triangles", triangles}}},
            {"notes", scene.notes},
        };
        std::printf("%s\n", result.dump(2).c_str());
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
    addConsoleOptions(*command, chosen.console);
    command->footer("Example: korva convert part.stl part.ply");
    command->callback([arguments, &chosen] {
        chosen.run = [arguments, &chosen] { return convert(*arguments, chosen.console); };
    });
}

}  // namespace korva
