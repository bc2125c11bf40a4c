// SPDX-License-Identifier: Apache-2.0
// The library's texts held against the reference, as the stories show them and as its sources hold
// them: one that nobody explains fails here, as does an explanation of what is not written.
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

/** What no story shows: the service's answers to others, and what no test can bring about. */
constexpr std::pair<const char*, const char*> kOfNoStory[] = {
        {"IMediaCodecLoggerService", "Transaction successfull"},
        {"IMediaCodecLoggerService", "getActiveVideoClients start"},
        {"IMediaCodecLoggerService", "getActiveVideoClients returning empty"},
        {"IMediaCodecLoggerService", "getActiveVideoClients returning the value 1"},
        {"ZMediaAnalyticV", "avc C2 OWD mediaTs:5 f:0 3"},
        {"ZMediaAnalyticV", "arithmetic overflow: 1 + 2"},
        {"ZMediaAnalyticV", "frame numbers are used up"},
};

/** The files of a folder with one of these ends, one after the other. */
std::string contentOf(const char* folder, const std::set<std::string>& ends) {
    std::string content;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (ends.count(entry.path().extension()) != 0) content += test::readFile(entry.path());
    }
    return content;
}

std::vector<std::string> split(const std::string& text, const char* separator) {
    const std::regex pattern(separator);
    return {std::sregex_token_iterator(text.begin(), text.end(), pattern, -1), {}};
}
const std::regex kField("\\{[a-z_]+:[dfwsrx]\\}");

TEST(LibraryText, everyLineAndRecordOfTheStoriesIsExplainedAndNoneBesides) {
    const Reference reference;
    std::set<std::string> shown;
    Fields fields;
    const auto showLine = [&](const std::string& tag, const std::string& text) {
        const ReferenceEntry* found = nullptr;
        EXPECT_EQ(Reference::Match::YES, reference.recognise(tag, text, &found, &fields)) << text;
        if (found != nullptr) shown.insert(found->table + "/" + found->id);
    };
    for (const auto& [tag, text] : kOfNoStory) showLine(tag, text);
    std::string stories = contentOf(STORIES, {".story"});
    stories = std::regex_replace(stories, std::regex("<(pid|client)>"), "1");
    const std::regex line(
            "    [VDIWE](?:/(\\S+))? (.*?)(\\\\n)*( \\(\\d+ times\\))?|    F .*?: (.*)");
    const std::regex record("    metric (\\S+) (\\S+) .*");
    const std::regex status("\\\\t(.*?)\\\\n");
    // Names that are cut off, and one that only a test has.
    const std::regex odd(".*(\\.f\\{|\\.key = ).*");
    for (const std::string& outcome : test::splitLines(stories)) {
        std::smatch match;
        if (std::regex_match(outcome, odd)) continue;
        if (std::regex_match(outcome, match, record)) {
            shown.insert("Metrics records/" + match.str(2) + " " + match.str(1));
        } else if (std::regex_match(outcome, match, line)) {
            showLine(match[1].matched ? match.str(1) : "MediaCodecLogger",
                     match[5].matched ? match.str(5) : match.str(2));
        } else if (outcome.rfind("    = \\tCodec Type", 0) == 0) {
            std::sregex_iterator it(outcome.begin(), outcome.end(), status);
            for (; it != std::sregex_iterator(); ++it) {
                const ReferenceEntry* entry = reference.statusLine(it->str(1), &fields);
                ASSERT_NE(nullptr, entry) << it->str(1);
                shown.insert(entry->table + "/" + entry->id);
            }
        }
    }
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            const std::string& schema = entry.fact("schema");
            if (entry.fact("line").empty() && schema.empty()) continue;
            EXPECT_EQ(1u, shown.erase(entry.table + "/" + entry.id +
                                      (schema.empty() ? "" : " " + schema)))
                    << entry.id << " stands in no story";
        }
    }
    // What is left are keys of the report, which share one line.
    for (const std::string& rest : shown) EXPECT_EQ(0u, rest.find("Report keys/")) << rest;
}

TEST(LibraryText, sourcesAndReferenceHoldTheSameTexts) {
    const Reference reference;
    const std::string sources = contentOf(LIBRARY_SOURCES, {".cpp", ".h"});
    std::string said;
    for (const Reference::Table& table : reference.tables()) {
        if (table.name == "json") continue;
        said += table.about + "\n" + table.tag + "\n";
        for (const ReferenceEntry& entry : table.entries) {
            said += "." + entry.id + "\n";
            for (const auto& [name, value] : entry.facts) {
                said += std::regex_replace(value, kField, "\n") + "\n";
            }
            const bool isName = table.name == "settings" || table.name == "report";
            const std::string& text = isName ? entry.id : entry.fact("line");
            EXPECT_LE(Pattern(text).fieldCount(), Fields::kMax) << text;
            for (const auto& word : split(std::regex_replace(text, kField, " "), "[^A-Za-z_]+")) {
                if (word.size() < 4) continue;
                EXPECT_NE(std::string::npos, sources.find(word)) << entry.id << ": " << word;
            }
        }
    }
    const std::regex token("//[^\n]*|/\\*[^]*?\\*/|#include[^\n]*|'\"'|\"((?:\\\\.|[^\"\\\\])*)\"");
    size_t texts = 0;
    for (std::sregex_iterator it(sources.begin(), sources.end(), token), end; it != end; ++it) {
        const std::string text = it->str(1);
        if (std::regex_match(text, kInternal)) continue;
        ++texts;
        for (const auto& part : split(text, "%[-0-9.]*(ll|l|z|h)?([a-zA-Z]|$)|\\\\[nt]")) {
            EXPECT_NE(std::string::npos, said.find(part)) << text;
        }
    }
    EXPECT_GT(texts, 150u);
}

}  // namespace
}  // namespace android::codecreport
