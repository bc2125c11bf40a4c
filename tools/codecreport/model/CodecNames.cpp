// SPDX-License-Identifier: Apache-2.0
#include "model/CodecNames.h"

#include <charconv>

namespace android::codecreport {

namespace {

bool take(std::string_view* text, std::string_view literal) {
    if (text->substr(0, literal.size()) != literal) return false;
    text->remove_prefix(literal.size());
    return true;
}

bool takeNumber(std::string_view* text, int* value) {
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), *value);
    if (error != std::errc() || *value < 0) return false;
    text->remove_prefix(end - text->data());
    return true;
}

/** "NAMEnumber.", if it stands there. */
bool takeWarning(std::string_view* text, std::string_view name, int* value) {
    std::string_view rest = *text;
    if (!take(&rest, name) || !takeNumber(&rest, value) || !take(&rest, ".")) return false;
    *text = rest;
    return true;
}

/** The first of the words that stands there with a dot behind it; empty if none does. */
template <size_t N>
std::string takeWord(std::string_view* text, const char* const (&words)[N]) {
    for (std::string_view word : words) {
        if (text->substr(0, word.size()) == word && text->substr(word.size(), 1) == ".") {
            text->remove_prefix(word.size() + 1);
            return std::string(word);
        }
    }
    return {};
}

}  // namespace

bool parseCodecTag(std::string_view text, CodecTag* tag) {
    tag->tunneled = take(&text, "tunneled.");
    tag->implementation = takeWord(&text, {"HW", "SW", "VND"});
    if (tag->implementation.empty()) return false;
    tag->framework = takeWord(&text, {"omx", "c2"});
    tag->kind = takeWord(&text, {"video", "audio", "unknown"});
    tag->format = text;
    return !tag->kind.empty();
}

bool parseLinePrefix(std::string_view text, LinePrefix* prefix) {
    take(&text, "W.");
    takeWarning(&text, "mcfd", &prefix->maxDropRun);
    takeWarning(&text, "rot", &prefix->repeatedOutputs);
    takeWarning(&text, "rit", &prefix->repeatedInputs);
    if (!takeNumber(&text, &prefix->pid)) return false;
    prefix->uhdScreen = take(&text, ".4K");
    prefix->secureMemory = take(&text, ".secure.");
    prefix->secure = prefix->secureMemory || take(&text, ".secureSW.");
    if (!prefix->secure && !take(&text, ".")) return false;
    constexpr std::string_view kAtmos = ".atmos";
    prefix->atmos =
            text.size() > kAtmos.size() && text.substr(text.size() - kAtmos.size()) == kAtmos;
    if (prefix->atmos) text.remove_suffix(kAtmos.size());
    prefix->tag = text;
    CodecTag tag;
    return parseCodecTag(text, &tag);
}

}  // namespace android::codecreport
