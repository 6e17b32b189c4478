// SPDX-License-Identifier: MIT
#include "korva/report_text.h"

#include "korva/io/input_file.h"
#include "korva/json_text.h"
#include "korva/numbers.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace korva {

namespace {

std::string percentOf(std::uint64_t part, std::uint64_t whole) {
    if (whole == 0) return "0";
    return withDigits(100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

}  // namespace

std::string sentenceOf(const Outcome& outcome) {
    const korvalite::Report& report = outcome.report;
    std::string text = textOf(outcome.output) + ": " + withCommas(outcome.vertices) +
                       " vertices, " + withCommas(outcome.triangles) + " triangles (" +
                       percentOf(outcome.triangles, report.inputTriangles) + "% of " +
                       withCommas(report.inputTriangles) + ").";
    if (outcome.error) text += "\n" + sentenceOf(*outcome.error);
    if (!report.missed) return text;
    const std::string items = outcome.countsTriangles ? " triangles" : " vertices";
    return text + "\nThe target of " + withCommas(report.asked) + items + " was not reached. " +
           report.advice;
}

void show(const Console& console, const Outcome& outcome) {
    for (const std::string& note : outcome.notes)
        console.say(note);
    const std::string text = console.json ? jsonText(jsonOf(outcome)) : sentenceOf(outcome);
    std::printf("%s\n", text.c_str());
}

nlohmann::json jsonOf(const Outcome& outcome) {
    const korvalite::Report& report = outcome.report;
    const korvalite::BlockedEdges& blocked = report.blockedEdges;
    nlohmann::json target = {{"unit", outcome.countsTriangles ? "triangles" : "vertices"},
                             {"asked", report.asked},
                             {"reached", report.reached},
                             {"missed", report.missed},
                             {"advice", report.advice}};
    if (!outcome.limit.empty())
        target = {{"unit", "error"}, {"asked", outcome.limit}, {"missed", false}};
    return {
        {"input",
         {{"path", textOf(outcome.input)},
          {"vertices", report.inputVertices},
          {"triangles", report.inputTriangles}}},
        {"output",
         {{"path", textOf(outcome.output)},
          {"vertices", outcome.vertices},
          {"triangles", outcome.triangles}}},
        {"target", target},
        {"error", outcome.error ? jsonOf(*outcome.error) : nlohmann::json()},
        {"blockedEdges",
         {{"mask", blocked.mask},
          {"border", blocked.border},
          {"seam", blocked.seam},
          {"symmetry", blocked.symmetry},
          {"noCost", blocked.noCost},
          {"flip", blocked.flip},
          {"topology", blocked.topology}}},
        {"notes", outcome.notes},
        {"seconds", outcome.seconds},
    };
}

}  // namespace korva
