// SPDX-License-Identifier: Apache-2.0
// The library's sources held against the reference: a text that it writes and that nobody explains
// fails here, as does an explanation of what it does not write.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include <tools/codecreport/reference/Reference.h>

#include "tests/support/Process.h"

namespace android::codecreport {
namespace {

/** Not for readers: what is compared, asked of others or named to the compiler. */
const std::regex kInternal(
        "android\\.media\\..*|!\\(|c2\\.(android|mtk)|omx\\.|google|crop|last|color-standard|"
        "vendor\\..*(type|depth)|atmos_detected|/proc/.*|com\\.android\\.mediaplayer|"
        "MMSW_QA_TEST|key = value|[a-zA-Z]*(Listener|Allowlist|Codec)|wb|re|other|g711|amr|raw|"
        "vp8|mp4v|signed members.*|overflow|mFrameCounter|length > .*|HWCRenderFrameCount|"
        "TunnelFrameDropCount|not yet|mcl.*|/data/tmp/.*|tunneled.*");

struct Literal {
    std::string file;
    /** What it is an argument of, if that writes a line. */
    std::string call;
    std::string text;
};

std::string unescaped(const std::string& source) {
    std::string text;
    for (size_t i = 0; i < source.size(); ++i) {
        if (source[i] != '\\') {
            text += source[i];
        } else if (const char c = source[++i]; c == 'n' || c == 't') {
            text += c == 'n' ? '\n' : '\t';
        } else {
            text += c;
        }
    }
    return text;
}

/** The string literals of a source, those that stand together as one. */
void collect(const std::string& file, std::vector<Literal>* literals) {
    std::string source = test::readFile(file);
    source = std::regex_replace(source, std::regex("PRI[dux](64|32)"), "\"$&\"");
    source = std::regex_replace(source, std::regex("\"PRI[dx](64|32)\""), "\"d\"");
    source = std::regex_replace(source, std::regex("\"PRIu(64|32)\""), "\"u\"");
    static const std::regex kToken(
            "//[^\n]*|/\\*[^]*?\\*/|#include[^\n]*|'(\\\\.|[^'\\\\])'|"
            "(\"(?:\\\\.|[^\"\\\\])*\")|([A-Za-z_]+)\\(|([^\\s])");
    std::string call;
    bool joins = false;
    for (std::sregex_iterator it(source.begin(), source.end(), kToken), end; it != end; ++it) {
        const std::smatch& match = *it;
        if (match[2].matched) {
            const std::string text = unescaped(match.str(2).substr(1, match.length(2) - 2));
            if (joins) {
                literals->back().text += text;
            } else {
                literals->push_back({file, call, text});
            }
            joins = true;
        } else if (match[3].matched) {
            call = match.str(3);
            joins = false;
        } else if (match[4].matched) {
            if (match.str(4) != "\\") joins = false;
            if (match.str(4) == ";") call.clear();
        }
    }
}

std::vector<Literal> literalsOfTheLibrary() {
    std::vector<Literal> literals;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(LIBRARY_SOURCES)) {
        const std::string end = entry.path().extension();
        if (end == ".cpp" || end == ".h") collect(entry.path(), &literals);
    }
    return literals;
}

/** The texts between the conversions of a format. */
std::vector<std::string> piecesOf(const std::string& text, const char* conversion) {
    const std::regex pattern(conversion);
    std::sregex_token_iterator it(text.begin(), text.end(), pattern, -1);
    return {it, {}};
}
constexpr char kPrintf[] = "%[-0-9.]*(ll|l|z|h)?[a-zA-Z]";
constexpr char kField[] = "\\{[a-z_]+:[dfwsrx]\\}";

/** All that the reference says, fields blanked out, in one text. */
std::string everythingSaid(const Reference& reference) {
    std::string all;
    for (const Reference::Table& table : reference.tables()) {
        if (table.name == "json") continue;
        all += table.about + "\n" + table.tag + "\n";
        for (const ReferenceEntry& entry : table.entries) {
            all += "." + entry.id + "\n";
            for (const auto& [name, value] : entry.facts) {
                all += std::regex_replace(value, std::regex(kField), "\n") + "\n";
            }
        }
    }
    return all;
}

/** Is this format's line one of the reference's, with some values in place of its texts? */
bool isRecognised(const Reference& reference, const std::string& format) {
    const size_t at = format.find("%s");
    if (at != std::string::npos) {
        for (const char* value : {"avc", "HW.c2.video.avc", "7.HW.c2.video.avc", "",
                                  "7.HW.c2.video.avc.BRISK-P5Ms", "updatePTSTime", "bitrateInKbps",
                                  "updateFormatChanged", "addCodec", "queue", "too long "}) {
            if (isRecognised(reference, std::string(format).replace(at, 2, value))) return true;
        }
        return false;
    }
    std::string line = std::regex_replace(format, std::regex("%c"), "+");
    line = std::regex_replace(line, std::regex("%p|0x%lx"), "0x1f");
    line = std::regex_replace(line, std::regex("%\\.3f"), "1.000");
    line = std::regex_replace(line, std::regex(kPrintf), "1");
    if (!line.empty() && line.back() == '\n') line.pop_back();
    const ReferenceEntry* entry = nullptr;
    Fields fields;
    return reference.recognise({}, line, &entry, &fields) == Reference::Match::YES;
}

TEST(LibraryText, everyLineRecordAndPropertyIsExplained) {
    const Reference reference;
    const std::string said = everythingSaid(reference);
    size_t lines = 0;
    for (const Literal& literal : literalsOfTheLibrary()) {
        const std::string& text = literal.text;
        if (std::regex_match(text, kInternal)) continue;
        // A text that other texts are put into says nothing by itself.
        const bool isLine = std::regex_match(literal.call, std::regex("ALOG[VDIWE]")) &&
                            text != "%s" && text.find_first_of(" :=") != std::string::npos;
        if (isLine) {
            ++lines;
            EXPECT_TRUE(isRecognised(reference, text)) << literal.file << ": " << text;
            continue;
        }
        for (const std::string& piece : piecesOf(text, kPrintf)) {
            for (const std::string& part : piecesOf(piece, "[\\n\\t]+")) {
                EXPECT_NE(std::string::npos, said.find(part)) << literal.file << ": " << text;
            }
        }
    }
    EXPECT_GT(lines, 50u);
}

TEST(LibraryText, nothingIsExplainedThatIsNotThere) {
    const Reference reference;
    std::string written;
    for (const Literal& literal : literalsOfTheLibrary()) written += literal.text + "\n";
    // A line may begin with the name of the operation that writes it.
    written += "addCodec updateFormatChanged updateFrameRender updateOutputFrame\n";
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            // Words of a line, the schema of a record, the name of a property.
            std::vector<std::string> words = piecesOf(entry.fact("line"), kField);
            if (!entry.fact("schema").empty()) words.push_back(entry.fact("schema"));
            if (table.name == "settings") words.push_back(entry.id);
            for (const std::string& part : words) {
                for (const std::string& word : piecesOf(part, "[^A-Za-z0-9_/]+")) {
                    if (word.size() < 4) continue;
                    EXPECT_NE(std::string::npos, written.find(word)) << entry.id << ": " << word;
                }
            }
        }
    }
}

}  // namespace
}  // namespace android::codecreport
