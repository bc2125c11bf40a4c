// SPDX-License-Identifier: Apache-2.0
#include "Story.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "Journal.h"
#include "Stage.h"

namespace android::test {

void fail(const std::string& message) {
    Journal::instance().setFilter("");
    Journal::instance().outcome("CANNOT BE PLAYED: " + message);
    Journal::instance().flush();
    _exit(2);
}

// Words

namespace {

/** Reads what stands in quotes from `at`, behind the opening one, to behind the closing one. */
std::string readQuoted(const std::string& line, size_t* at) {
    std::string text;
    for (; *at < line.size() && line[*at] != '"'; ++*at) {
        if (line[*at] != '\\') {
            text += line[*at];
        } else if (line[++*at] == 'x') {
            text += static_cast<char>(strtol(line.substr(*at + 1, 2).c_str(), nullptr, 16));
            *at += 2;
        } else {
            text += line[*at] == 'n' ? '\n' : line[*at];
        }
    }
    ++*at;
    return text;
}

/** Words end at blanks; "text"*3 is the text three times. */
std::vector<Word> split(const std::string& line) {
    std::vector<Word> words;
    for (size_t at = 0; (at = line.find_first_not_of(' ', at)) != std::string::npos;) {
        const size_t start = at;
        Word word;
        while (at < line.size() && line[at] != ' ') {
            if (line[at] != '"') {
                word.text += line[at++];
                continue;
            }
            word.isQuoted |= word.text.empty();
            std::string quoted = readQuoted(line, &++at);
            if (at < line.size() && line[at] == '*') {
                char* end;
                const long times = strtol(&line[at + 1], &end, 10);
                const std::string once = quoted;
                for (long i = 1; i < times; ++i) quoted += once;
                at = static_cast<size_t>(end - line.data());
            }
            word.text += quoted;
        }
        word.raw = line.substr(start, at - start);
        words.push_back(word);
    }
    return words;
}

/** What a word of the story stands for, with $1 to $9 replaced by the words behind it. */
std::string expand(const std::string& body, const std::vector<Word>& words) {
    std::string text;
    for (size_t at = 0; at < body.size(); ++at) {
        if (body[at] != '$') {
            text += body[at];
        } else if (body[++at] == '*') {
            for (size_t i = 1; i < words.size(); ++i) text += words[i].raw + " ";
        } else {
            const size_t index = static_cast<size_t>(body[at] - '0');
            if (index >= words.size()) fail("'" + words[0].text + "' lacks a word");
            text += words[index].raw;
        }
    }
    return text;
}

using Iterator = std::vector<Word>::const_iterator;

class Player {
  public:
    Player(Stage& stage, const Definitions& definitions)
        : mStage(stage), mDefinitions(definitions) {}

    void play(Iterator at, Iterator end) {
        while (at != end) {
            int depth = 0;
            const Iterator last = std::find_if(at, end, [&](const Word& word) {
                depth += word.raw == "{" ? 1 : word.raw == "}" ? -1 : 0;
                return depth == 0 && word.raw == ";";
            });
            if (at != last) playOne({at, last});
            at = last == end ? end : last + 1;
        }
    }

  private:
    void playOne(const std::vector<Word>& words) {
        const std::string& name = words[0].text;
        const auto definition = mDefinitions.find(name);
        if (definition != mDefinitions.end()) {
            const std::vector<Word> expanded = split(expand(definition->second, words));
            play(expanded.begin(), expanded.end());
        } else if (name == "times") {
            if (words.size() < 4) fail("times COUNT { EVENTS }");
            const long count = strtol(words[1].text.c_str(), nullptr, 0);
            for (long i = 0; i < count; ++i) play(words.begin() + 3, words.end() - 1);
        } else if (name == "fork") {
            inAnotherProcess({words.begin() + 1, words.end()});
        } else if (name == "during") {
            if (words.size() < 3) fail("during TEXT EVENT");
            const std::vector<Word> events(words.begin() + 2, words.end());
            Journal::instance().setHook(words[1].text, [player = *this, events]() mutable {
                player.play(events.begin(), events.end());
            });
        } else {
            Args args(mStage, {words.begin() + 1, words.end()});
            if (!call(name, args)) fail("there is no '" + name + "'");
            if (!args.isEmpty()) fail("'" + name + "' does not take '" + args.text() + "'");
        }
    }

    /** What would end the story happens to a copy of its process. */
    void inAnotherProcess(const std::vector<Word>& words) {
        Journal::instance().flush();
        const pid_t child = fork();
        if (child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            Journal::instance().maskPid();
            const bool isBlock = words[0].raw == "{";
            play(words.begin() + isBlock, words.end() - isBlock);
            Journal::instance().flush();
            _exit(0);
        }
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        Journal::instance().outcome(!WIFSIGNALED(status)          ? "lived"
                                    : WTERMSIG(status) == SIGABRT ? "died"
                                                                  : strsignal(WTERMSIG(status)));
    }

    Stage& mStage;
    const Definitions& mDefinitions;
};

}  // namespace

// Arguments

std::string Args::text() {
    if (isEmpty()) fail("a word is missing");
    return mWords[mAt++].text;
}

int64_t Args::parse(const std::string& text) const {
    if (text == "max") return INT64_MAX;
    if (text == "min") return INT64_MIN;
    char* end;
    errno = 0;
    const int64_t value = strtoll(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0) fail("'" + text + "' is no number");
    return value;
}

int64_t Args::number() {
    return parse(text());
}

long Args::pts() {
    const std::string word = text();
    if (word[0] == '+') {
        stage.pts += parse(word.substr(1));
    } else if (word != ".") {
        stage.pts = parse(word);
    }
    return stage.pts;
}

long Args::time(int64_t unitNs) {
    const std::string word = text("@");
    if (word[0] != '@') return parse(word);
    const int64_t afterMs = word.size() > 1 ? parse(word.substr(word[1] == '+' ? 2 : 1)) : 0;
    return (stage.clock.nowUs() * 1000 + afterMs * 1000000) / unitNs;
}

bool Args::flag(const char* name) {
    const auto at = std::find_if(mWords.begin() + static_cast<long>(mAt), mWords.end(),
                                 [&](const Word& word) { return word.raw == name; });
    if (at == mWords.end()) return false;
    mWords.erase(at);
    return true;
}

std::string Args::named(const char* name, const char* fallback) {
    const std::string start = std::string(name) + "=";
    for (auto word = mWords.begin() + static_cast<long>(mAt); word != mWords.end(); ++word) {
        if (word->isQuoted || word->text.rfind(start, 0) != 0) continue;
        const std::string value = word->text.substr(start.size());
        mWords.erase(word);
        return value;
    }
    return fallback;
}

int64_t Args::namedNumber(const char* name, int64_t fallback) {
    const std::string value = named(name, "");
    return value.empty() ? fallback : parse(value);
}

std::vector<std::pair<std::string, std::string>> Args::pairs() {
    std::vector<std::pair<std::string, std::string>> pairs;
    while (!isEmpty()) {
        const std::string word = text();
        const size_t equals = word.find('=');
        if (equals == std::string::npos) fail("'" + word + "' is not of the form name=value");
        pairs.emplace_back(word.substr(0, equals), word.substr(equals + 1));
    }
    return pairs;
}

bool define(const std::string& line, Definitions* definitions) {
    constexpr char kDefine[] = "define ";
    if (line.rfind(kDefine, 0) != 0) return false;
    const size_t equals = line.find(" = ");
    if (equals == std::string::npos) fail("define NAME = EVENTS");
    const size_t start = strlen(kDefine);
    (*definitions)[line.substr(start, equals - start)] = line.substr(equals + 3);
    return true;
}

void play(Stage& stage, const Definitions& definitions, const std::string& line) {
    std::string events = line;
    std::string filter;
    if (line[0] == '~') {
        filter = "\n";
        events = line.substr(1);
    } else if (line[0] == '/') {
        const size_t end = line.find('/', 1);
        if (end == std::string::npos) fail("/TEXT/ EVENTS");
        filter = line.substr(1, end - 1);
        events = line.substr(end + 1);
    }
    Journal::instance().setFilter(filter);
    const std::vector<Word> words = split(events);
    Player(stage, definitions).play(words.begin(), words.end());
}

}  // namespace android::test
