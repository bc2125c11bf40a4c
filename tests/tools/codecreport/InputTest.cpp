// SPDX-License-Identifier: Apache-2.0
#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <tools/codecreport/reading/Captures.h>
#include <tools/codecreport/reading/LineReader.h>
#include <tools/codecreport/reading/MetricsReader.h>

#include "ReportSupport.h"

namespace android::test {
namespace {

using codecreport::LineReader;
using codecreport::MetricsReader;

/** The lines of an input, joined by '|', then what went wrong. */
std::pair<std::string, std::string> linesOf(const std::string& path) {
    LineReader reader;
    if (!reader.open(path)) return {"", reader.error()};
    std::string lines;
    std::string_view line;
    while (reader.next(&line)) {
        lines += line;
        lines += '|';
    }
    return {lines, reader.error()};
}

std::string compressed(const std::string& content, int filter, int format, const char* name) {
    const std::string path = fileWith("", name);
    archive* writer = archive_write_new();
    EXPECT_EQ(ARCHIVE_OK, archive_write_add_filter(writer, filter));
    archive_write_set_format(writer, format);
    archive_write_open_filename(writer, path.c_str());
    for (int i = 0; i < (format == ARCHIVE_FORMAT_ZIP ? 2 : 1); ++i) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, i == 0 ? "bugreport.txt" : "more.txt");
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_size(entry, content.size());
        archive_write_header(writer, entry);
        archive_write_data(writer, content.data(), content.size());
        archive_entry_free(entry);
    }
    archive_write_free(writer);
    return path;
}

TEST(LineReader, readsTextAndSaysWhyItCannot) {
    using Result = std::pair<std::string, std::string>;
    EXPECT_EQ(Result("a|b||c|", ""), linesOf(fileWith("a\nb\n\nc")));
    EXPECT_EQ(Result("", ""), linesOf(fileWith("")));
    EXPECT_EQ(Result("", "No such file or directory"), linesOf("/no/such/file"));
    EXPECT_EQ(Result("", "Is a directory"), linesOf("/"));
    EXPECT_NE("", linesOf("/proc/self/mem").second) << "opens, and cannot be read";
    // Lines that no log has are cut.
    EXPECT_EQ(
            "a|" + std::string(LineReader::kMaxLine, 'x') + "|b|",
            linesOf(fileWith("a\n" + std::string(3 * LineReader::kMaxLine, 'x') + "\nb\n")).first);
}

TEST(LineReader, readsCompressedTextAndArchives) {
    const std::string content = "first\n" + std::string(300'000, 'x') + "\nno end";
    const std::string lines = linesOf(fileWith(content)).first;
    for (int filter :
         {ARCHIVE_FILTER_GZIP, ARCHIVE_FILTER_XZ, ARCHIVE_FILTER_ZSTD, ARCHIVE_FILTER_BZIP2}) {
        const std::string path = compressed(content, filter, ARCHIVE_FORMAT_RAW, "compressed");
        EXPECT_EQ(lines, linesOf(path).first) << filter;
    }
    // The files of an archive stay apart.
    LineReader reader;
    ASSERT_TRUE(
            reader.open(compressed("a\nno end", ARCHIVE_FILTER_NONE, ARCHIVE_FORMAT_ZIP, "apart")));
    std::string seen;
    for (std::string_view line; reader.next(&line);) {
        seen += std::to_string(reader.file()) + std::string(line) + "|";
    }
    EXPECT_EQ("0a|0no end|1a|1no end|", seen);
}

TEST(TextDecoder, makesUtf8OfUtf16HoweverItIsCut) {
    // "é", a character beyond 16 bits, half of such a one, "x".
    const std::string big("\xfe\xff\x00\xe9\xd8\x3d\xde\x00\xd8\x3d\x00x\x00\n", 14);
    std::string little;
    for (size_t i = 0; i < big.size(); i += 2) little += {big[i + 1], big[i]};
    const std::string expected = "\u00e9\U0001f600\ufffdx\n";
    const std::pair<std::string, std::string> cases[] = {{big, expected},
                                                         {little, expected},
                                                         {"\xef\xbb\xbf" + expected, expected},
                                                         {"\xff\xffplain", "\xff\xffplain"}};
    for (const auto& [bytes, text] : cases) {
        for (size_t step = 1; step <= bytes.size(); ++step) {
            codecreport::TextDecoder decoder;
            std::string decoded;
            for (size_t at = 0; at < bytes.size(); at += step) {
                decoded += decoder.decode(std::string_view(bytes).substr(at, step));
            }
            EXPECT_EQ(text, decoded) << step;
        }
    }
}

TEST(Captures, rotatedFilesGoOnInOrderOthersStandAlone) {
    using codecreport::Capture;
    EXPECT_THAT(
            codecreport::capturesOf({"b.log", "a.log", "take.1", "a.log.10.gz", "take.2", "a.log.2",
                                     "a.log.20260301"}),
            testing::ElementsAre(Capture{"b.log"}, Capture{"a.log.10.gz", "a.log.2", "a.log"},
                                 Capture{"take.1"}, Capture{"take.2"}, Capture{"a.log.20260301"}));
}

TEST(MetricsReader, sumsRecordsThatDifferInTheirValueOnly) {
    MetricsReader metrics;
    const auto record = [](const char* value, const char* type) {
        return std::string(R"({"schema":"lxcd/2/02330410","name":"FramedropType","package":"p",)"
                           R"("unit":"frames","dimension":"HW_avc","value":)") +
               value + R"(,"data":{"ConsecFD":")" + type + R"("},"flag":1})";
    };
    metrics.onLine(record("3", "max"));
    metrics.onLine(record("5.5", "max"));
    metrics.onLine(record("1", "1"));
    for (const char* bad : {"{", "[]", "7", R"({"name":"x"})", R"({"name":7,"value":1})",
                            R"({"name":"x","value":"1"})", "{\"name\":\"x\",\"value\":1"}) {
        metrics.onLine(bad);
    }
    metrics.onLine("");
    EXPECT_EQ(3u, metrics.records());
    EXPECT_EQ(7u, metrics.notUnderstood());
    ASSERT_EQ(2u, metrics.rows().size());
    const MetricsReader::Row& row = metrics.rows().rbegin()->second;
    EXPECT_EQ("ConsecFD=max", row.data);
    EXPECT_EQ(2u, row.count);
    EXPECT_EQ(5.5, row.last);
    EXPECT_EQ(8.5, row.sum);
}

}  // namespace
}  // namespace android::test
