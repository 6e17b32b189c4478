// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/numbers.h"

#include <nlohmann/json.hpp>

#include <array>
#include <memory>

namespace korva {

namespace {

using korvalite::MeshCheck;

struct Arguments {
    std::string input;
};

/// A fault that a mesh can have.
struct Row {
    const char* key;  // in JSON
    const char* text;
    std::uint64_t MeshCheck::*count;
    std::vector<std::uint32_t> MeshCheck::Places::*places;  // null if there are none
    const char* item;                                       // what the places are
};

using Places = MeshCheck::Places;

constexpr std::array kRows{
    Row{"nonFiniteVertices", "vertices that are not finite", &MeshCheck::nonFiniteVertices,
        &Places::nonFiniteVertices, "vertices"},
    Row{"badTriangles", "triangles with an index out of range", &MeshCheck::badTriangles,
        &Places::badTriangles, "triangles"},
    Row{"borderEdges", "border edges", &MeshCheck::borderEdges, &Places::borderEdges, "triangles"},
    Row{"borderLoops", "border loops", &MeshCheck::borderLoops, nullptr, ""},
    Row{"nonManifoldEdges", "edges with more than two triangles", &MeshCheck::nonManifoldEdges,
        &Places::nonManifoldEdges, "triangles"},
    Row{"nonManifoldVertices", "vertices where surfaces touch in one point",
        &MeshCheck::nonManifoldVertices, &Places::nonManifoldVertices, "vertices"},
    Row{"flippedEdges", "edges between opposite windings", &MeshCheck::flippedEdges,
        &Places::flippedEdges, "triangles"},
    Row{"degenerateTriangles", "triangles without area", &MeshCheck::degenerateTriangles,
        &Places::degenerateTriangles, "triangles"},
    Row{"duplicateTriangles", "triangles that are there twice", &MeshCheck::duplicateTriangles,
        &Places::duplicateTriangles, "triangles"},
    Row{"unusedVertices", "vertices without triangles", &MeshCheck::unusedVertices,
        &Places::unusedVertices, "vertices"},
    Row{"repeatedPositions", "vertices at the place of another", &MeshCheck::repeatedPositions,
        &Places::repeatedPositions, "vertices"},
    Row{"seamEdges", "edges on a UV seam", &MeshCheck::seamEdges, nullptr, ""},
};

/// A command that makes the best of the mesh.
std::string suggestionFor(const std::string& input, const MeshCheck& check) {
    std::string command = "korva simplify " + input + " OUT --to 10%";
    if (check.repeatedPositions > 0 && check.borderEdges > 0) command += " --weld";
    return command;
}

void print(const Row& row, const MeshCheck& check) {
    if (check.*row.count == 0) return;
    std::printf("%14s %s", withCommas(check.*row.count).c_str(), row.text);
    if (row.places != nullptr) {
        std::printf(" (%s", row.item);
        for (const std::uint32_t place : check.places.*row.places)
            std::printf(" %u", place);
        const bool hasMore = (check.places.*row.places).size() < check.*row.count;
        std::printf("%s)", hasMore ? " ..." : "");
    }
    std::printf("\n");
}

void printText(const std::string& input, const MeshCheck& check) {
    std::printf("%s: %s vertices, %s triangles, %s %s, %s.\n", input.c_str(),
                withCommas(check.vertices).c_str(), withCommas(check.triangles).c_str(),
                withCommas(check.components).c_str(),
                check.components == 1 ? "component" : "components",
                check.isClosed() ? "closed" : "open");
    for (const Row& row : kRows)
        print(row, check);
    std::printf("Simplifying it takes about %s MB of memory.\nSuggested: %s\n",
                withCommas(check.memoryBytes / 1'000'000 + 1).c_str(),
                suggestionFor(input, check).c_str());
}

nlohmann::json jsonOf(const std::string& input, const MeshCheck& check) {
    nlohmann::json faults;
    for (const Row& row : kRows) {
        faults[row.key]["count"] = check.*row.count;
        if (row.places != nullptr) faults[row.key]["first"] = check.places.*row.places;
    }
    return {
        {"path", input},
        {"vertices", check.vertices},
        {"triangles", check.triangles},
        {"components", check.components},
        {"closed", check.isClosed()},
        {"usable", check.isUsable()},
        {"memoryBytes", check.memoryBytes},
        {"faults", faults},
        {"suggestion", suggestionFor(input, check)},
    };
}

ExitCode checkMesh(const Arguments& arguments, const Console& console) {
    std::vector<std::string> notes;
    MeshCheck check;
    {
        ProgressBar bar = console.progress({{"reading", 1}, {"checking", 1}});
        const korvalite::Mesh mesh = loadAsItIs(arguments.input, {}, notes, followBytes(bar, 0));
        bar.show(1, 0, 1);
        check = korvalite::check(mesh.view());
    }
    console.say(notes);
    if (console.json)
        printJson(jsonOf(arguments.input, check));
    else
        printText(arguments.input, check);
    return ExitCode::Done;
}

}  // namespace

void addCheck(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("check", "Say what is wrong with a mesh, and where");
    command->add_option("IN", arguments->input, "The mesh to check")->required();
    finishCommand(*command, chosen, arguments, checkMesh, "korva check scan.ply");
}

}  // namespace korva
