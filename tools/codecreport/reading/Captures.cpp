// SPDX-License-Identifier: Apache-2.0
#include "reading/Captures.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string_view>

namespace android::codecreport {

namespace {

// Nobody rotates more; a longer number is a date or a time.
constexpr size_t kMaxDigits = 3;

struct Rotated {
    std::string base = {};
    /** 0 for the file that is being written. */
    int age = 0;
};

Rotated rotatedOf(const std::string& path) {
    std::string_view name = path;
    for (const std::string_view end : {".gz", ".xz", ".zst", ".bz2", ".lz4"}) {
        if (name.size() > end.size() && name.substr(name.size() - end.size()) == end) {
            name.remove_suffix(end.size());
            break;
        }
    }
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {std::string(name)};
    const std::string digits(name.substr(dot + 1));
    if (digits.empty() || digits.size() > kMaxDigits ||
        digits.find_first_not_of("0123456789") != std::string::npos) {
        return {std::string(name)};
    }
    return {std::string(name.substr(0, dot)), std::stoi(digits)};
}

}  // namespace

std::vector<Capture> capturesOf(const std::vector<std::string>& files) {
    std::vector<Rotated> rotated;
    std::transform(files.begin(), files.end(), std::back_inserter(rotated), rotatedOf);
    // Numbers alone may be anything, such as takes: rotation leaves a file without one.
    std::set<std::string> bases;
    for (const Rotated& file : rotated) {
        if (file.age == 0) bases.insert(file.base);
    }
    std::vector<std::string> order;
    std::map<std::string, std::map<int, std::string, std::greater<>>> series;
    for (size_t i = 0; i < files.size(); ++i) {
        // Two of one age are the same log twice, such as compressed and not.
        const bool isRotated = bases.count(rotated[i].base) != 0 &&
                               series[rotated[i].base].count(rotated[i].age) == 0;
        const std::string name = isRotated ? rotated[i].base : files[i] + '\n' + std::to_string(i);
        auto& members = series[name];
        if (members.empty()) order.push_back(name);
        members.emplace(isRotated ? rotated[i].age : 0, files[i]);
    }
    std::vector<Capture> captures;
    for (const std::string& name : order) {
        Capture& capture = captures.emplace_back();
        for (const auto& [age, file] : series[name]) capture.push_back(file);
    }
    return captures;
}

}  // namespace android::codecreport
