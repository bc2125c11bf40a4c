// SPDX-License-Identifier: Apache-2.0
#include "reading/LogcatParser.h"

#include <string.h>

#include <charconv>

namespace android::codecreport {

namespace {

constexpr char kPriorities[] = "VDIWEFSA";

bool isPriority(char c) {
    return c != '\0' && strchr(kPriorities, c) != nullptr;
}

void skipBlanks(std::string_view* text) {
    const size_t at = text->find_first_not_of(' ');
    text->remove_prefix(at == std::string_view::npos ? text->size() : at);
}

std::string_view trimmed(std::string_view text) {
    skipBlanks(&text);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

/** A number that is a word of its own or ends at one of `ends`. */
bool readNumber(std::string_view* text, const char* ends, int* value) {
    skipBlanks(text);
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), *value);
    const size_t length = end - text->data();
    if (error != std::errc() || *value < 0) return false;
    if (length < text->size() && strchr(ends, (*text)[length]) == nullptr) return false;
    text->remove_prefix(length);
    return true;
}

bool take(std::string_view* text, std::string_view literal) {
    if (text->substr(0, literal.size()) != literal) return false;
    text->remove_prefix(literal.size());
    return true;
}

/** "TAG   : text"; a log that was cut may end with the colon. */
bool readTagAndText(std::string_view text, LogLine* line) {
    size_t colon = text.find(": ");
    if (colon == std::string_view::npos) {
        if (text.empty() || text.back() != ':') return false;
        colon = text.size() - 1;
    }
    line->tag = trimmed(text.substr(0, colon));
    line->text = text.substr(std::min(text.size(), colon + 2));
    return true;
}

/** "[UID:] PID" in front of a closing parenthesis, as the uid modifier writes it. */
bool readPidInParentheses(std::string_view* text, LogLine* line) {
    const size_t close = text->find(')');
    if (close == std::string_view::npos) return false;
    std::string_view inside = text->substr(0, close);
    const size_t colon = inside.rfind(':');
    if (colon != std::string_view::npos) inside.remove_prefix(colon + 1);
    if (!readNumber(&inside, "", &line->pid)) return false;
    text->remove_prefix(close + 1);
    return true;
}

/** "P/TAG  ( PID): text" or, in the tag form, "P/TAG  : text". */
bool parseBrief(std::string_view text, bool withPid, LogLine* line) {
    if (text.size() < 4 || !isPriority(text[0]) || text[1] != '/') return false;
    const std::string_view whole = text;
    line->priority = text[0];
    text.remove_prefix(2);
    if (!withPid) {
        LogLine other;
        return !parseBrief(whole, true, &other) && readTagAndText(text, line);
    }
    for (size_t open = text.find('('); open != std::string_view::npos;
         open = text.find('(', open + 1)) {
        std::string_view rest = text.substr(open + 1);
        if (!readPidInParentheses(&rest, line) || !(take(&rest, ": ") || rest == ":")) continue;
        line->tag = trimmed(text.substr(0, open));
        line->text = rest;
        return true;
    }
    return false;
}

/** "P( PID) text  (TAG)" */
bool parseProcess(std::string_view text, LogLine* line) {
    if (text.size() < 4 || !isPriority(text[0]) || text[1] != '(') return false;
    line->priority = text[0];
    text.remove_prefix(2);
    if (!readPidInParentheses(&text, line) || !take(&text, " ")) return false;
    const size_t open = text.rfind("  (");
    if (open == std::string_view::npos || text.back() != ')') return false;
    line->tag = trimmed(text.substr(open + 3, text.size() - open - 4));
    line->text = text.substr(0, open);
    return true;
}

/** "P( PID: TID) text", or "P( UID: PID: TID) text" */
bool parseThread(std::string_view text, LogLine* line) {
    if (text.size() < 4 || !isPriority(text[0]) || text[1] != '(') return false;
    const size_t close = text.find(')');
    if (close == std::string_view::npos) return false;
    std::string_view inside = text.substr(2, close - 2);
    const size_t colon = inside.rfind(':');
    if (colon == std::string_view::npos) return false;
    std::string_view tid = inside.substr(colon + 1);
    inside = inside.substr(0, colon);
    const size_t uidColon = inside.rfind(':');
    if (uidColon != std::string_view::npos) inside.remove_prefix(uidColon + 1);
    if (!readNumber(&inside, "", &line->pid) || !readNumber(&tid, "", &line->tid)) return false;
    line->priority = text[0];
    line->text = text.substr(close + 1);
    take(&line->text, " ");
    return true;
}

bool isDivider(std::string_view text) {
    return text.empty() || take(&text, "--------- ");
}

}  // namespace

const char* toString(LogFormat format) {
    static constexpr const char* kNames[] = {"threadtime", "time",   "long",   "brief", "tag",
                                             "process",    "thread", "liblog", "raw"};
    return kNames[static_cast<size_t>(format)];
}

bool LogcatParser::readTime(std::string_view* text, LogLine* line) {
    skipBlanks(text);
    const LogTime::Stamp stamp = mTime.read(*text);
    if (stamp.length == 0) return false;
    line->timeUs = stamp.timeUs;
    line->resolutionUs = stamp.resolutionUs;
    line->hasTime = true;
    text->remove_prefix(stamp.length);
    return take(text, " ");
}

/** "DATE [UID] PID TID P TAG  : text" */
bool LogcatParser::parseThreadtime(std::string_view text, LogLine* line) {
    if (!readTime(&text, line)) return false;
    std::string_view words[3];
    size_t count = 0;
    for (;; ++count) {
        skipBlanks(&text);
        if (text.size() > 1 && isPriority(text[0]) && text[1] == ' ') break;
        const size_t end = text.find(' ');
        if (count == 3 || end == std::string_view::npos) return false;
        words[count] = text.substr(0, end);
        text.remove_prefix(end);
    }
    // A user's name may take the place of its number; the last two are process and thread.
    if (count < 2 || !readNumber(&words[count - 2], "", &line->pid) ||
        !readNumber(&words[count - 1], "", &line->tid)) {
        return false;
    }
    line->priority = text[0];
    text.remove_prefix(2);
    return readTagAndText(text, line);
}

/** "DATE P/TAG( PID): text" */
bool LogcatParser::parseTime(std::string_view text, LogLine* line) {
    return readTime(&text, line) && parseBrief(text, true, line);
}

/** "TAG P DATE PID TID text", seconds only */
bool LogcatParser::parseLiblog(std::string_view text, LogLine* line) {
    const size_t end = text.find(' ');
    if (end == std::string_view::npos || text.size() < end + 4 || !isPriority(text[end + 1]) ||
        text[end + 2] != ' ') {
        return false;
    }
    line->tag = text.substr(0, end);
    line->priority = text[end + 1];
    text.remove_prefix(end + 3);
    if (!readTime(&text, line) || !readNumber(&text, " ", &line->pid) ||
        !readNumber(&text, " ", &line->tid)) {
        return false;
    }
    line->text = text;
    take(&line->text, " ");
    return true;
}

/** "[ DATE [UID:] PID: TID P/TAG  ]" */
bool LogcatParser::parseLongHeader(std::string_view text) {
    if (!take(&text, "[ ") || text.size() < 4 || text.substr(text.size() - 2) != " ]") return false;
    text.remove_suffix(2);
    LogLine line;
    if (!readTime(&text, &line)) return false;
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos || slash == 0 || !isPriority(text[slash - 1])) return false;
    std::string_view ids = trimmed(text.substr(0, slash - 1));
    const size_t lastColon = ids.rfind(':');
    if (lastColon == std::string_view::npos) return false;
    std::string_view tid = ids.substr(lastColon + 1);
    std::string_view pid = ids.substr(0, lastColon);
    const size_t before = pid.find_last_of(": ");
    if (before != std::string_view::npos) pid.remove_prefix(before + 1);
    if (!readNumber(&pid, "", &line.pid) || !readNumber(&tid, "", &line.tid)) return false;
    line.format = LogFormat::LONG;
    line.priority = text[slash - 1];
    mLongTag = trimmed(text.substr(slash + 1));
    mLongHeader = line;
    return true;
}

bool LogcatParser::parseAs(LogFormat format, std::string_view text, LogLine* line) {
    *line = LogLine();
    line->format = format;
    switch (format) {
        case LogFormat::THREADTIME:
            return parseThreadtime(text, line);
        case LogFormat::TIME:
            return parseTime(text, line);
        case LogFormat::BRIEF:
            return parseBrief(text, true, line);
        case LogFormat::TAG:
            return parseBrief(text, false, line);
        case LogFormat::PROCESS:
            return parseProcess(text, line);
        case LogFormat::THREAD:
            return parseThread(text, line);
        case LogFormat::LIBLOG:
            return parseLiblog(text, line);
        case LogFormat::RAW:
            // A text without any header can only be told from damage where no line has a header.
            line->text = text;
            return !mSawHeader;
        default:
            return false;
    }
}

LogcatParser::Result LogcatParser::parse(std::string_view text, LogLine* line) {
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.remove_suffix(1);
    if (text.find('\033') != std::string_view::npos) {
        mStripped.clear();
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\033') {
                while (i < text.size() && text[i] != 'm') ++i;
            } else {
                mStripped.push_back(text[i]);
            }
        }
        text = mStripped;
    }
    if (text.size() > 2 && text[0] == '[' && parseLongHeader(text)) {
        mInLong = mSawHeader = true;
        return Result::FRAME;
    }
    if (text.empty()) mInLong = false;
    if (isDivider(text)) return Result::FRAME;
    if (mInLong) {
        *line = mLongHeader;
        line->tag = mLongTag;
        line->text = text;
        ++mCounts[static_cast<size_t>(LogFormat::LONG)];
        return Result::MESSAGE;
    }
    LogFormat format = mLast;
    bool found = parseAs(format, text, line);
    for (size_t i = 0; !found && i < static_cast<size_t>(LogFormat::COUNT); ++i) {
        format = static_cast<LogFormat>(i);
        found = format != mLast && parseAs(format, text, line);
    }
    if (!found) return Result::NOT_A_LOG_LINE;
    if (format != LogFormat::RAW) {
        mLast = format;
        mSawHeader = true;
    }
    ++mCounts[static_cast<size_t>(format)];
    return Result::MESSAGE;
}

}  // namespace android::codecreport
