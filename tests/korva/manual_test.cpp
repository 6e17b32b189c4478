// SPDX-License-Identifier: MIT
//
// Manual pages and completions, made from the options of the parser.
#include "korva/command_test.h"
#include "korva/commands/command.h"
#include "korva/manual/completion.h"
#include "korva/manual/man_page.h"
#include "korva/manual/option_table.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace korva {
namespace {

class Manual : public CommandTest {
protected:
    Manual() { addCommands(app_, chosen_); }

    [[nodiscard]] std::string page(const std::string& command) const {
        return manPage(*app_.get_subcommand(command));
    }
    /// What bash offers for the last of the words, one per line.
    std::string offered(const std::vector<std::string>& words) {
        std::string script = bashCompletion(app_) + "COMP_WORDS=(korva";
        for (const std::string& word : words)
            script += " '" + word + "'";
        script += ")\nCOMP_CWORD=" + std::to_string(words.size()) +
                  "\n_korva\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n";
        test::writeWhole(in("script"), script);
        const std::string command =
            "bash '" + in("script") + "' >'" + in("out") + "' 2>'" + in("errors") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(test::readWhole(in("errors")), "");
        return test::readWhole(in("out"));
    }

    CLI::App app_;
    Chosen chosen_;
};

TEST_F(Manual, EveryCommandHasAPageWithAllItsOptions) {
    const std::vector<const CLI::App*> commands = commandsIn(app_);
    ASSERT_GE(commands.size(), 10U);
    for (const CLI::App* command : commands) {
        const std::string text = manPage(*command);
        for (const char* section : {"NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXAMPLES"})
            EXPECT_TRUE(has(text, std::string(".SH ") + section + "\n")) << text;
        for (const CLI::Option* option : command->get_options({})) {
            for (const std::string& name : option->get_lnames())
                EXPECT_TRUE(has(text, "\\fB\\-\\-" + roffText(name) + "\\fR")) << name;
            EXPECT_TRUE(has(text, roffText(option->get_description()))) << option->get_name();
        }
    }
}

TEST_F(Manual, APageSaysWhatAValueMayBe) {
    const std::string text = page("simplify");
    EXPECT_TRUE(has(text, ".TP\n\\fB\\-\\-symmetry\\fR \\fITEXT\\fR\n")) << text;
    EXPECT_TRUE(has(text, " Possible values: none, x, y, z. Default: none.\n")) << text;
    EXPECT_TRUE(has(text, " Range: 1 to 100. Default: ")) << text;
    EXPECT_TRUE(has(text, ".TP\n\\fB\\-q\\fR, \\fB\\-\\-quiet\\fR\n")) << text;
    EXPECT_TRUE(has(text, ".SS Simplification\n.TP\n")) << text;
    EXPECT_TRUE(has(page("measure"), " Range: above 0. Needs \\-\\-heat.\n")) << page("measure");
}

TEST_F(Manual, ASynopsisMarksWhatMayBeLeftOut) {
    EXPECT_TRUE(has(page("simplify"), ".SH SYNOPSIS\n\\fBkorva\\fR \\fBsimplify\\fR \\fIIN\\fR "
                                      "\\fIOUT\\fR [\\fIOPTION\\fR]...\n"));
    EXPECT_TRUE(has(page("manual"), " [\\fICOMMAND\\fR] "));
}

TEST_F(Manual, TheMainPageListsCommandsAndExitCodes) {
    const std::string text = manPage(app_);
    EXPECT_TRUE(has(text, ".TH KORVA 1 ")) << text;
    EXPECT_TRUE(has(text, ".SH NAME\nkorva \\- simplifies triangle meshes")) << text;
    EXPECT_TRUE(has(text, ".SH EXIT STATUS\n.TP\n0\nDone.\n")) << text;
    EXPECT_TRUE(has(text, ".TP\n6\nA file cannot be written.\n")) << text;
    for (const CLI::App* command : commandsIn(app_))
        EXPECT_TRUE(has(text, "\\fBkorva\\-" + command->get_name() + "\\fR(1)")) << text;
    EXPECT_FALSE(has(page("simplify"), "EXIT STATUS"));
}

TEST(RoffText, HidesWhatRoffWouldRead) {
    EXPECT_EQ(roffText("--to 10%"), "\\-\\-to 10%");
    EXPECT_EQ(roffText(".kvm file.\n.ply"), "\\&.kvm file.\n\\&.ply");
    EXPECT_EQ(roffText("a\\b"), "a\\eb");
    EXPECT_EQ(roffText("'it's' \"quoted\""), "\\(aqit\\(aqs\\(aq \\(dqquoted\\(dq");
    EXPECT_EQ(roffText("`a` ^ ~/b"), "\\(gaa\\(ga \\(ha \\(ti/b");
}

TEST_F(Manual, PagesOfOddTextsHoldNoRequests) {
    CLI::App app("Does odd things", "odd");
    CLI::App* command = app.add_subcommand("inner", ".first 'and' \\fBlast");
    command->footer("Example: .odd 'x'");
    const std::string text = manPage(*command);
    EXPECT_TRUE(has(text, ".SH DESCRIPTION\n\\&.first \\(aqand\\(aq \\efBlast.\n")) << text;
    EXPECT_TRUE(has(text, ".nf\n\\&.odd \\(aqx\\(aq\n.fi\n")) << text;
}

TEST_F(Manual, HiddenOptionsAndCommandsStayHidden) {
    CLI::App app("Shows little", "open");
    int number = 0;
    app.add_option("--secret", number)->group("");
    app.add_subcommand("hidden", "Stays away")->group("");
    app.add_subcommand("shown", "Is there");
    for (const std::string& text :
         {manPage(app), bashCompletion(app), zshCompletion(app), fishCompletion(app)}) {
        EXPECT_FALSE(has(text, "secret")) << text;
        EXPECT_FALSE(has(text, "hidden")) << text;
        EXPECT_TRUE(has(text, "shown")) << text;
    }
}

TEST_F(Manual, TheCommandPrintsAndWritesPages) {
    ASSERT_EQ(run({"manual", "check"}), ExitCode::Done);
    EXPECT_EQ(out_, page("check"));
    ASSERT_EQ(run({"manual"}), ExitCode::Done);
    EXPECT_EQ(out_, manPage(app_));
    ASSERT_EQ(run({"manual", "--into", folder_.path()}), ExitCode::Done) << err_;
    EXPECT_EQ(test::readWhole(in("korva.1")), manPage(app_));
    EXPECT_EQ(test::readWhole(in("korva-check.1")), page("check"));
}

TEST_F(Manual, WhatCannotBePrintedIsRefused) {
    EXPECT_EQ(run({"manual", "nonsense"}), ExitCode::Usage);
    EXPECT_EQ(run({"manual", "check", "--into", folder_.path()}), ExitCode::Usage);
    EXPECT_EQ(run({"completion", "nonsense"}), ExitCode::Usage);
    EXPECT_EQ(run({"completion"}), ExitCode::Usage);
    EXPECT_EQ(run({"manual", "--into", in("missing")}), ExitCode::CannotWrite);
    EXPECT_TRUE(has(err_, "korva.1: the folder is missing")) << err_;
}

TEST_F(Manual, CompletionsHaveEveryCommandAndOption) {
    ASSERT_EQ(run({"completion", "bash"}), ExitCode::Done);
    EXPECT_EQ(out_, bashCompletion(app_));
    ASSERT_EQ(run({"completion", "zsh"}), ExitCode::Done);
    const std::string zsh = out_;
    ASSERT_EQ(run({"completion", "fish"}), ExitCode::Done);
    const std::string fish = out_;
    EXPECT_TRUE(zsh.starts_with("#compdef korva\n"));
    for (const CLI::App* command : commandsIn(app_)) {
        const std::string& name = command->get_name();
        EXPECT_TRUE(has("\n" + offered({""}), "\n" + name + "\n"));
        EXPECT_TRUE(has(zsh, "'" + name + ":" + command->get_description())) << zsh;
        EXPECT_TRUE(has(fish, " -a '" + name + "' ")) << fish;
        const std::string names = "\n" + offered({name, "-"});
        for (const OptionRow& row : optionRows(*command)) {
            if (row.isPositional) continue;
            EXPECT_TRUE(has(names, "\n" + row.names.back() + "\n")) << row.names.back() << names;
            EXPECT_TRUE(has(zsh, "'" + row.names.back())) << zsh;
            EXPECT_TRUE(has(fish, "_from " + name + "'")) << fish;
            if (row.names.back().starts_with("--")) {
                EXPECT_TRUE(has(fish, " -l " + row.names.back().substr(2) + " ")) << fish;
            }
        }
    }
}

TEST_F(Manual, BashOffersTheValuesOfAnOption) {
    EXPECT_EQ(offered({"simplify", "a.ply", "--symmetry", ""}), "none\nx\ny\nz\n");
    EXPECT_EQ(offered({"simplify", "--symmetry", "=", "n"}), "none\n");
    EXPECT_EQ(offered({"simplify", "--symmetry", "="}), "none\nx\ny\nz\n");
    EXPECT_EQ(offered({"picture", "--background", "w"}), "white\n");
    EXPECT_EQ(offered({"completion", ""}), "bash\nzsh\nfish\n");
    EXPECT_EQ(offered({"manual", "conv"}), "convert\n");
    EXPECT_EQ(offered({"simplify", "--fr"}), "--freeze-border\n");
    EXPECT_EQ(offered({"-"}), "-h\n--help\n--version\n");
}

TEST_F(Manual, BashLeavesFilesToItself) {
    EXPECT_EQ(offered({"simplify", "a"}), "\n");
    EXPECT_EQ(offered({"measure", "--heat", ""}), "\n");
    EXPECT_EQ(offered({"batch", "--jobs", ""}), "\n");
}

TEST_F(Manual, QuotesInDescriptionsDoNotEndThem) {
    CLI::App app("Does odd things", "odd");
    bool flag = false;
    app.add_subcommand("inner", "It's odd")->add_flag("--odd", flag, "A \\ and [x]: it's odd");
    EXPECT_TRUE(has(zshCompletion(app), "'--odd[A \\\\ and \\[x\\]\\: it'\\''s odd]'"))
        << zshCompletion(app);
    EXPECT_TRUE(has(fishCompletion(app), " -l odd -d 'A \\\\ and [x]: it\\'s odd'\n"))
        << fishCompletion(app);
}

}  // namespace
}  // namespace korva
