// SPDX-License-Identifier: Apache-2.0
#include <inttypes.h>
#include <stdio.h>

#include <algorithm>

#include "Views.h"

namespace android::codeclogger {

namespace {

/** A number, or what heads a column of numbers. */
bool isNumber(const std::string& text) {
    return text == "#" || text == "PID" || text == "/s" ||
           (text.find_first_of("0123456789") != std::string::npos &&
            text.find_first_not_of("0123456789.-*") == std::string::npos);
}

std::string yesNo(bool value) {
    return value ? "YES" : "NO";
}

std::string line(const char* key, const std::string& value) {
    return std::string("\t") + key + ": " + (value.empty() ? "-" : value) + "\n";
}

}  // namespace

std::string idText(int64_t id) {
    char text[24];
    snprintf(text, sizeof(text), "0x%" PRIx64, static_cast<uint64_t>(id));
    return text;
}

std::string TextTable::text() const {
    std::vector<size_t> widths(mRows[0].size());
    for (const auto& row : mRows) {
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const auto& row : mRows) {
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - row[i].size(), ' ');
            if (isNumber(row[i])) {
                text += padding + row[i];
            } else {
                text += row[i] + (i + 1 < row.size() ? padding : "");
            }
            text += i + 1 < row.size() ? "  " : "\n";
        }
    }
    return text;
}

std::string listText(const std::vector<CodecInfo>& codecs) {
    if (codecs.empty()) return "No codec is registered.\n";
    TextTable table({"#", "PID", "PACKAGE", "KIND", "FORMAT", "RESOLUTION", "LAST FRAME", "ID"});
    for (const CodecInfo& codec : codecs) {
        const ClientEntry& entry = codec.entry;
        table.add({(entry.isActive ? "*" : "") + std::to_string(entry.handle),
                   std::to_string(entry.pid), entry.packageName, entry.isVideo ? "video" : "audio",
                   entry.format, codec.resolution(), codec.lastFrame(), idText(entry.id)});
    }
    return table.text();
}

std::string statusText(const std::vector<CodecInfo>& codecs) {
    std::string text;
    for (const CodecInfo& codec : codecs) {
        const ClientEntry& entry = codec.entry;
        text += "Codec #" + std::to_string(entry.handle) + (entry.isActive ? " (active): " : ": ") +
                codec.describe() + "\n" + codec.status;
        text += line("Last Frame", codec.lastFrame());
        if (codec.answer == Answer::GIVEN && entry.isVideo) {
            text += line("HDR Type", codec.hdrType) + line("Scan Type", codec.scanType) +
                    line("Bit Depth", std::to_string(codec.bitDepth)) +
                    line("Color Standard", std::to_string(codec.colorStandard)) +
                    line("Frames Since Flush", std::to_string(codec.frames)) +
                    line("Late Outputs", std::to_string(entry.lateOutputs)) +
                    line("Longest Output Gap (ms)", std::to_string(entry.longestDelayMs)) +
                    line("First Frame Rendered", yesNo(entry.firstFrameMs != 0));
        }
        text += line("Uid", std::to_string(entry.uid)) + line("Client Id", idText(entry.id));
    }
    return text.empty() ? "No codec is registered.\n" : text;
}

std::string allowlistText(const Allowlist& allowlist) {
    std::string text;
    if (!allowlist.label.empty()) text += "# " + allowlist.label + "\n";
    for (const std::string& name : allowlist.packages) text += name + "\n";
    for (const std::string& name : allowlist.exceptions) text += "except " + name + "\n";
    return text.empty() ? "The allowlist is empty.\n" : text;
}

}  // namespace android::codeclogger
