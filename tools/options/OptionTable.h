// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

/**
 * What a program's command line takes, once: parsing, `--help`, the manual's OPTIONS and EXIT
 * STATUS and the shells' completion all come from one table, so that none can say what another does
 * not.
 *
 * Needs nothing but the C library's getopt_long(), which a device has too.
 */
namespace android::options {

/** Completes with the names of files. */
constexpr char kFiles[] = "<files>";

struct Option {
    /** Long name, without dashes. */
    const char* name;
    /** Short name, or 0. */
    char letter;
    /**
     * What stands for the value in texts, such as "FRAME:MS"; null: takes none. In brackets, such
     * as "[FILE]": it may be left out, and is given after "=" only.
     */
    const char* value;
    /** A sentence or two without line breaks; the first begins in lower case and ends without dot.
     */
    const char* help;
    /** Takes the value, null where there is none; false: it is none that the option accepts. */
    std::function<bool(const char* value)> take;
    /** What the value must be, for complaints; null: what `value` says. */
    const char* expected = nullptr;
    /** Completes the value: words with spaces between, or kFiles; null: nothing does. */
    const char* completion = nullptr;
    /** Commands that it goes with, spaces between; null: all. */
    const char* commands = nullptr;
};

struct Section {
    const char* title;
    /** A sentence on all of its options, or null. */
    const char* intro;
    std::vector<Option> options;
};

/** The first operands, such as "allowlist set", where a program is several in one. */
struct Command {
    const char* words;
    /** What follows, such as "[ID...]", or empty. */
    const char* arguments;
    const char* help;
};

struct ExitStatus {
    int code;
    const char* meaning;
};

/** Exit code of every program for a command line that it cannot take. */
constexpr int kExitUsage = 2;

struct Program {
    const char* name;
    const char* version;
    /** Lines behind the program's name, such as "[OPTION...] FILE...". */
    std::vector<const char*> usage;
    /** Paragraphs before the options. A line that begins with a space stays as it is. */
    const char* intro;
    std::vector<Command> commands;
    std::vector<Section> sections;
    /** Paragraphs behind the options, or null. */
    const char* notes;
    std::vector<ExitStatus> exits;
    /** Completes operands that are no command: words, or kFiles; null: nothing does. */
    const char* operands = nullptr;
};

/**
 * Reads the command line; "--help" and "--version" come with every table. Says on standard error
 * what is wrong. Not for two threads at once, as getopt_long() is not.
 *
 * @param operands what is no option, in order, a command's words included
 * @return the exit code if the program is to end here
 */
std::optional<int> parse(const Program& program, int argc, char** argv,
                         std::vector<std::string>* operands);

/** Says on standard error what is wrong with the command line, and where help is; kExitUsage. */
int complain(const Program& program, const std::string& text);

/** What "--help" prints. */
std::string helpText(const Program& program);

/**
 * What the hidden "--documentation FORM" prints: "man" (OPTIONS and EXIT STATUS for a manual page
 * in mdoc), "bash" or "zsh" (completion); empty for any other form.
 */
std::string documentation(const Program& program, const std::string& form);

}  // namespace android::options
