// SPDX-License-Identifier: Apache-2.0
#include "fleet/LogFiles.h"

#include <ctype.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "reading/Captures.h"

namespace android::codecreport {

namespace {

namespace fs = std::filesystem;

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/** Does the pattern fit the whole text? Fills labels from the last to the first. */
bool matches(std::string_view text, std::string_view pattern, Labels* labels) {
    if (pattern.empty()) return text.empty();
    if (pattern[0] != '*' && pattern[0] != '{') {
        return !text.empty() && text[0] == pattern[0] &&
               matches(text.substr(1), pattern.substr(1), labels);
    }
    const bool isLabel = pattern[0] == '{';
    const size_t next = isLabel ? pattern.find('}') + 1 : 1;
    for (size_t length = isLabel ? 1 : 0; length <= text.size(); ++length) {
        if (length > 0 && text[length - 1] == '/') return false;
        if (!matches(text.substr(length), pattern.substr(next), labels)) continue;
        if (isLabel) labels->emplace(pattern.substr(1, next - 2), text.substr(0, length));
        return true;
    }
    return false;
}

void listFolder(const fs::path& folder, std::vector<std::string>* found,
                std::vector<std::string>* problems) {
    std::error_code error;
    std::vector<std::string> paths;
    fs::recursive_directory_iterator it(folder, error);
    for (; !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        std::error_code ignored;
        const bool isHidden = it->path().filename().string()[0] == '.';
        if (isHidden && it->is_directory(ignored)) it.disable_recursion_pending();
        const bool isLog = !isHidden && it->is_regular_file(ignored);
        if (isLog && !isDatabase(it->path().string())) paths.push_back(it->path().string());
    }
    if (error) problems->push_back(folder.string() + ": " + error.message());
    std::sort(paths.begin(), paths.end());
    found->insert(found->end(), paths.begin(), paths.end());
}

}  // namespace

std::vector<LogFile> listLogs(const std::vector<std::string>& paths,
                              std::vector<std::string>* problems) {
    std::vector<std::string> found;
    for (const std::string& path : paths) {
        std::error_code error;
        if (fs::is_directory(path, error)) {
            listFolder(path, &found, problems);
        } else {
            found.push_back(path);
        }
    }
    std::vector<LogFile> files;
    for (Capture& capture : capturesOf(found)) {
        const bool isMetrics = endsWith(capture.back(), ".jsonl");
        files.push_back({std::move(capture), isMetrics, {}});
    }
    return files;
}

std::optional<Labels> labelsOf(const std::string& path, const std::string& pattern) {
    std::vector<std::string_view> names = {path};
    for (const char* packed : {".gz", ".xz", ".zst", ".bz2", ".zip"}) {
        if (endsWith(path, packed)) {
            names.push_back(names[0].substr(0, path.size() - strlen(packed)));
        }
    }
    for (const std::string_view name : names) {
        for (size_t start = 0; start < name.size();) {
            Labels labels;
            if (matches(name.substr(start), pattern, &labels)) return labels;
            const size_t slash = name.find('/', start);
            if (slash == std::string_view::npos) break;
            start = slash + 1;
        }
    }
    return std::nullopt;
}

bool isLabelPattern(const std::string& pattern) {
    bool inName = false;
    size_t length = 0;
    for (const char c : pattern) {
        if (c == '{' || c == '}') {
            if ((c == '{') == inName || (inName && length == 0)) return false;
            inName = !inName;
            length = 0;
        } else {
            if (inName && isalnum(static_cast<unsigned char>(c)) == 0 && c != '_') return false;
            ++length;
        }
    }
    return !inName;
}

}  // namespace android::codecreport
