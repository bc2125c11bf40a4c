// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <map>
#include <string>
#include <vector>

namespace android::test {

class Stage;

/** One word of an event, or what stood in quotes. */
struct Word {
    std::string text;
    bool isQuoted = false;
    /** As written, for the expansion of words of the story's own. */
    std::string raw;
};

/** The words behind an operation's name; a word that no operation asks for is an error. */
class Args {
  public:
    Args(Stage& stage, std::vector<Word> words) : stage(stage), mWords(std::move(words)) {}

    bool isEmpty() const { return mAt == mWords.size(); }
    std::string text();
    std::string text(const char* fallback) { return isEmpty() ? fallback : text(); }
    int64_t number();
    int64_t number(int64_t fallback) { return isEmpty() ? fallback : number(); }
    /**
     * A media timestamp: "." is the story's current one, "+N" the one N later, and a number becomes
     * the current one.
     */
    long pts();
    /** "@", "@+N" and "@-N" are the clock and N milliseconds from it, in units of so many ns. */
    long time(int64_t unitNs);

    // Words that may stand anywhere.

    bool flag(const char* name);
    std::string named(const char* name, const char* fallback);
    int64_t namedNumber(const char* name, int64_t fallback);
    /** Those of the form name=value that are left. */
    std::vector<std::pair<std::string, std::string>> pairs();

    Stage& stage;

  private:
    int64_t parse(const std::string& text) const;

    std::vector<Word> mWords;
    size_t mAt = 0;
};

/** The words that stories may define for themselves: the name and what it stands for. */
using Definitions = std::map<std::string, std::string>;

/** Takes up "define NAME = EVENTS". */
bool define(const std::string& line, Definitions* definitions);

/** Plays the events of one line. */
void play(Stage& stage, const Definitions& definitions, const std::string& line);

/** Ends the process: the story cannot be read. */
[[noreturn]] void fail(const std::string& message);

/** Calls the operation of that name; false if there is none. */
bool call(const std::string& name, Args& args);

}  // namespace android::test
