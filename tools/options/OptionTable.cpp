// SPDX-License-Identifier: Apache-2.0
#include "OptionTable.h"

#include <getopt.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <sstream>

namespace android::options {

namespace {

constexpr int kFirstLong = 1000;
constexpr char kDocumentation[] = "documentation";

bool isOptional(const Option& option) {
    return option.value != nullptr && option.value[0] == '[';
}

std::vector<std::string> wordsOf(const char* text) {
    std::istringstream stream(text == nullptr ? "" : text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

/** The table's options and those of every program, with the numbers that getopt_long() gives them.
 */
std::vector<const Option*> allOptions(const Program& program) {
    static const Option kHelp = {"help", 'h', nullptr, "print this text", nullptr};
    static const Option kVersion = {"version", 0, nullptr, "print the version", nullptr};
    std::vector<const Option*> all;
    for (const Section& section : program.sections) {
        for (const Option& option : section.options) all.push_back(&option);
    }
    all.push_back(&kHelp);
    all.push_back(&kVersion);
    return all;
}

/** The command that the operands begin with, or nullptr. */
const Command* commandOf(const Program& program, const std::vector<std::string>& operands) {
    for (const Command& command : program.commands) {
        const auto words = wordsOf(command.words);
        if (operands.size() >= words.size() &&
            std::equal(words.begin(), words.end(), operands.begin())) {
            return &command;
        }
    }
    return nullptr;
}

bool goesWith(const Option& option, const Command* command) {
    if (option.commands == nullptr || command == nullptr) return true;
    const auto words = wordsOf(option.commands);
    return std::find(words.begin(), words.end(), wordsOf(command->words)[0]) != words.end();
}

struct GetoptTables {
    std::vector<option> longs;
    std::string letters = ":";
};

GetoptTables getoptTables(const std::vector<const Option*>& all) {
    GetoptTables tables;
    for (size_t i = 0; i < all.size(); ++i) {
        const Option& each = *all[i];
        const int argument = each.value == nullptr ? no_argument
                             : isOptional(each)    ? optional_argument
                                                   : required_argument;
        tables.longs.push_back({each.name, argument, nullptr, kFirstLong + static_cast<int>(i)});
        if (each.letter == 0) continue;
        tables.letters += each.letter;
        tables.letters.append(static_cast<size_t>(argument), ':');
    }
    tables.longs.push_back({kDocumentation, required_argument, nullptr, kFirstLong - 1});
    tables.longs.push_back({});
    return tables;
}

/** Lines of at most `width` characters, each but the first behind `indent` spaces. */
std::string wrap(const std::string& text, size_t indent, size_t width) {
    std::string out;
    size_t column = indent;
    for (const std::string& word : wordsOf(text.c_str())) {
        if (column > indent && column + 1 + word.size() > width) {
            out += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            out += ' ';
            ++column;
        }
        out += word;
        column += word.size();
    }
    return out;
}

constexpr size_t kWidth = 90;
constexpr size_t kColumn = 26;

std::string row(const std::string& left, const char* right) {
    std::string line = "  " + left;
    if (line.size() + 2 > kColumn) {
        line += '\n' + std::string(kColumn, ' ');
    } else {
        line.resize(kColumn, ' ');
    }
    return line + wrap(right, kColumn, kWidth) + '\n';
}

std::string paragraphs(const char* text) {
    std::string out;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        out += (line.empty() || line[0] == ' ' ? line : wrap(line, 0, kWidth)) + '\n';
    }
    return out;
}

std::string synopsisOf(const Option& option) {
    std::string text = option.letter != 0 ? std::string{'-', option.letter} + ", " : std::string();
    text += std::string("--") + option.name;
    if (isOptional(option)) {
        const std::string value = option.value;
        return text + "[=" + value.substr(1);
    }
    return option.value != nullptr ? text + ' ' + option.value : text;
}

std::string inMdoc(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else if (c == ' ' && !out.empty() && out.back() == '.') {
            out += '\n';  // A sentence begins a line.
        } else {
            out += c;
        }
    }
    // A dot or quote at the beginning of a line would be a request.
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out.insert(0, "\\&");
    return out;
}

std::string capitalised(std::string text) {
    if (!text.empty()) text[0] = static_cast<char>(toupper(text[0]));
    return text;
}

void mdocItem(const Option& option, std::string* out) {
    *out += ".It ";
    if (option.letter != 0) *out += std::string("Fl ") + option.letter + " , ";
    *out += std::string("Fl \\-") + inMdoc(option.name);
    if (isOptional(option)) {
        std::string value = option.value + 1;
        value.pop_back();
        *out += " Ns Op = Ns Ar " + inMdoc(value);
    } else if (option.value != nullptr) {
        *out += " Ar \"" + inMdoc(option.value) + '"';
    }
    *out += '\n' + inMdoc(capitalised(option.help)) + ".\n";
    if (option.commands != nullptr) {
        *out += "Goes with " + inMdoc(option.commands) + " only.\n";
    }
}

std::string manual(const Program& program) {
    std::string out;
    if (!program.commands.empty()) {
        out += ".Sh COMMANDS\n.Bl -tag -width Ds\n";
        for (const Command& command : program.commands) {
            out += std::string(".It Cm ") + inMdoc(command.words);
            if (*command.arguments != '\0') out += " Ar \"" + inMdoc(command.arguments) + '"';
            out += '\n' + inMdoc(capitalised(command.help)) + ".\n";
        }
        out += ".El\n";
    }
    out += ".Sh OPTIONS\n";
    for (const Section& section : program.sections) {
        out += std::string(".Ss ") + section.title + '\n';
        if (section.intro != nullptr) out += inMdoc(section.intro) + '\n';
        out += ".Bl -tag -width Ds\n";
        for (const Option& option : section.options) mdocItem(option, &out);
        out += ".El\n";
    }
    out += ".Ss General\n.Bl -tag -width Ds\n.It Fl h , Fl \\-help\nPrint a short help.\n"
           ".It Fl \\-version\nPrint the version.\n.El\n";
    return out;
}

std::string manualExits(const Program& program) {
    std::string out = ".Sh EXIT STATUS\n.Bl -tag -width 130 -compact\n";
    for (const ExitStatus& exit : program.exits) {
        out += ".It " + std::to_string(exit.code) + '\n' + inMdoc(capitalised(exit.meaning)) +
               ".\n";
    }
    return out + ".El\n";
}

std::string quotedWords(const std::vector<std::string>& words) {
    std::string out = "'";
    for (const std::string& word : words) {
        out += (out.size() > 1 ? " " : "") + word;
    }
    return out + '\'';
}

std::string complete(const char* completion) {
    if (completion == nullptr) return "return";
    if (strcmp(completion, kFiles) == 0) return "compopt -o default && return";
    const auto words = wordsOf(completion);
    const bool open = std::any_of(words.begin(), words.end(), [](const std::string& word) {
        return strchr("=@:", word.back()) != nullptr;
    });
    return (open ? "compopt -o nospace; " : "") + std::string("words=") + quotedWords(words);
}

std::string bash(const Program& program) {
    const std::string name = program.name;
    std::vector<std::string> flags;
    std::string cases;
    for (const Option* option : allOptions(program)) {
        flags.push_back(std::string("--") + option->name);
        if (option->value == nullptr || isOptional(*option)) continue;
        cases += "    --" + std::string(option->name);
        if (option->letter != 0) cases += std::string(" | -") + option->letter;
        cases += ") " + complete(option->completion) + " ;;\n";
    }
    std::vector<std::string> commands;
    std::string seconds;
    for (const Command& command : program.commands) {
        const auto words = wordsOf(command.words);
        if (std::find(commands.begin(), commands.end(), words[0]) == commands.end()) {
            commands.push_back(words[0]);
        }
        if (words.size() > 1) seconds += (seconds.empty() ? "" : " ") + words[1];
        if (words.size() > 1 && seconds == words[1])
            cases += "    " + words[0] + ") words='@' ;;\n";
    }
    if (const size_t at = cases.find("'@'"); at != std::string::npos) {
        cases.replace(at, 3, '\'' + seconds + '\'');
    }
    std::string rest = "        " + complete(program.operands) + '\n';
    if (!commands.empty()) {
        rest = "        if [[ $COMP_CWORD -eq 1 ]]; then words=" + quotedWords(commands);
        rest += (program.operands != nullptr ? " && compopt -o default; else " : "; else ") +
                complete(program.operands) + "; fi\n";
    }
    return "# SPDX-License-Identifier: Apache-2.0\n# bash completion of " + name + "\n_" + name +
           "() {\n    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} "
           "words=\n    case $before in\n" +
           cases + "    *)\n        if [[ $current == -* ]]; then words=" + quotedWords(flags) +
           "; else\n" + rest +
           "        fi\n        ;;\n    esac\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n}\n"
           "complete -F _" +
           name + ' ' + name + '\n';
}

/** For a text in single quotes inside brackets: what zsh would read as its own is taken out. */
std::string inZsh(const std::string& text) {
    std::string out;
    for (const char c : text.substr(0, text.find_first_of(";.("))) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            if (strchr("[]:", c) != nullptr) out += '\\';
            out += c;
        }
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

std::string zshAction(const char* completion) {
    if (completion == nullptr) return std::string();
    if (strcmp(completion, kFiles) == 0) return ":_files";
    return std::string(":(") + completion + ')';
}

std::string zsh(const Program& program) {
    std::string out = std::string("#compdef ") + program.name +
                      "\n# SPDX-License-Identifier: Apache-2.0\n_arguments";
    for (const Option* option : allOptions(program)) {
        out += " \\\n    ";
        if (option->letter != 0) {
            out += std::string("'*'{-") + option->letter + ",--" + option->name + "}'";
        } else {
            out += std::string("'*--") + option->name + (isOptional(*option) ? "=-" : "");
        }
        out += '[' + inZsh(option->help) + ']';
        if (option->value != nullptr) {
            out += (isOptional(*option) ? "::" : ":") + inZsh(option->value) +
                   zshAction(option->completion);
        }
        out += '\'';
    }
    if (!program.commands.empty()) {
        std::string words;
        for (const Command& command : program.commands) {
            const std::string word = wordsOf(command.words)[0];
            if ((' ' + words + ' ').find(' ' + word + ' ') != std::string::npos) continue;
            words += (words.empty() ? "" : " ") + word;
        }
        out += " \\\n    '1:command:(" + words + ")'";
    }
    return out + " \\\n    '*:operand" +
           (program.operands == nullptr ? ":" : zshAction(program.operands)) + "'\n";
}

}  // namespace

int complain(const Program& program, const std::string& text) {
    fprintf(stderr, "%s: %s\nTry '%s --help'.\n", program.name, text.c_str(), program.name);
    return kExitUsage;
}

std::optional<int> parse(const Program& program, int argc, char** argv,
                         std::vector<std::string>* operands) {
    const auto all = allOptions(program);
    const GetoptTables tables = getoptTables(all);
    std::vector<const Option*> given;
    opterr = 0;
    optind = 1;
    for (int c; (c = getopt_long(argc, argv, tables.letters.c_str(), tables.longs.data(),
                                 nullptr)) != -1;) {
        const std::string shown = argv[optind - 1];
        if (c == ':') return complain(program, shown + ": a value is missing");
        if (c == '?') {
            if (optopt == 0 || optopt >= kFirstLong) {
                return complain(program, shown + (optopt == 0 ? ": unknown or ambiguous option"
                                                              : ": takes no value"));
            }
            return complain(program,
                            std::string("-") + static_cast<char>(optopt) + ": unknown option");
        }
        if (c == kFirstLong - 1) {
            const std::string text = documentation(program, optarg);
            fputs(text.c_str(), stdout);
            return text.empty() ? kExitUsage : 0;
        }
        const auto found = std::find_if(all.begin(), all.end(), [&](const Option* each) {
            return each->letter == c || (c >= kFirstLong && each == all[c - kFirstLong]);
        });
        const Option& option = **found;
        if (option.take == nullptr) {
            const std::string text =
                    strcmp(option.name, "help") == 0
                            ? helpText(program)
                            : std::string(program.name) + ' ' + program.version + '\n';
            fputs(text.c_str(), stdout);
            return 0;
        }
        if (!option.take(optarg)) {
            return complain(program,
                            std::string("--") + option.name + ' ' +
                                    (optarg != nullptr ? optarg : "") + ": expected " +
                                    (option.expected != nullptr ? option.expected : option.value));
        }
        given.push_back(&option);
    }
    operands->assign(argv + optind, argv + argc);
    const Command* command = commandOf(program, *operands);
    for (const Option* option : given) {
        if (goesWith(*option, command)) continue;
        return complain(program, std::string("--") + option->name + " goes with " +
                                         option->commands + " only");
    }
    return std::nullopt;
}

std::string helpText(const Program& program) {
    std::string out;
    for (const char* usage : program.usage) {
        out += (out.empty() ? "usage: " : "       ") + std::string(program.name) + ' ' + usage +
               '\n';
    }
    out += '\n' + paragraphs(program.intro);
    if (!program.commands.empty()) out += "\nCommands\n";
    for (const Command& command : program.commands) {
        const std::string gap = *command.arguments != '\0' ? " " : "";
        out += row(command.words + gap + command.arguments, command.help);
    }
    for (const Section& section : program.sections) {
        out += std::string("\n") + section.title + '\n';
        if (section.intro != nullptr) out += "  " + wrap(section.intro, 2, kWidth) + '\n';
        for (const Option& option : section.options) out += row(synopsisOf(option), option.help);
    }
    out += "\nGeneral\n" + row("-h, --help", "print this text") +
           row("--version", "print the version");
    if (program.notes != nullptr) out += '\n' + paragraphs(program.notes);
    std::string exits;
    for (const ExitStatus& exit : program.exits) {
        exits += (exits.empty() ? "" : ", ") + std::to_string(exit.code) + ' ' + exit.meaning;
    }
    return out + '\n' + wrap("Exit code: " + exits + '.', 0, kWidth) + '\n';
}

std::string documentation(const Program& program, const std::string& form) {
    if (form == "man") return manual(program);
    if (form == "man-exits") return manualExits(program);
    if (form == "bash") return bash(program);
    if (form == "zsh") return zsh(program);
    return std::string();
}

}  // namespace android::options
