// SPDX-License-Identifier: Apache-2.0
// Plays the stories of a file, each in a process of its own, and compares what came out of them.
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Journal.h"
#include "Stage.h"
#include "Story.h"

namespace android::test {
namespace {

constexpr char kUsage[] =
        "usage: story_test [--update] FILE [STORY]\n"
        "Plays the stories of FILE, or one of them, and compares what comes out with what is\n"
        "written there. --update writes it there instead. README.md has the format.\n"
        "Exit code: 0 as written, 1 different, 2 usage or a story that cannot be played.\n";
constexpr char kStory[] = "story ";

using Lines = std::vector<std::string>;

struct StoryText {
    std::string name;
    Lines lines;
};

/** The file's parts: what stands before the first story has no name. */
std::vector<StoryText> readStories(std::istream& file) {
    std::vector<StoryText> stories(1);
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(kStory, 0) == 0) {
            const size_t start = strlen(kStory);
            stories.push_back({line.substr(start, line.find(':') - start), {}});
        }
        stories.back().lines.push_back(line);
    }
    return stories;
}

bool isOutcome(const std::string& line) {
    return line.rfind("    ", 0) == 0;
}

void playAll(const Lines& lines, Definitions definitions, int fd) {
    Journal& journal = Journal::instance();
    journal.open(fd);
    Stage stage;
    for (const std::string& line : lines) {
        if (isOutcome(line)) continue;
        journal.source(line);
        if (line.empty() || line[0] == '#' || line.rfind(kStory, 0) == 0) continue;
        if (!define(line, &definitions)) play(stage, definitions, line);
    }
    journal.setFilter("\n");  // what the end of the stage brings is no part of the story
}

/** The story with what came out of it this time. */
Lines replay(const StoryText& story, const Definitions& definitions, bool* isPlayed) {
    int channel[2];
    if (pipe2(channel, O_CLOEXEC) != 0) return {};
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        playAll(story.lines, definitions, channel[1]);
        exit(0);
    }
    close(channel[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = read(channel[0], buffer, sizeof(buffer))) > 0;) {
        text.append(buffer, static_cast<size_t>(got));
    }
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) text += "    died\n";
    *isPlayed = WIFSIGNALED(status) ? WTERMSIG(status) == SIGABRT : WEXITSTATUS(status) == 0;

    Lines lines;
    for (size_t at = 0, end; (end = text.find('\n', at)) != text.npos; at = end + 1) {
        lines.push_back(text.substr(at, end - at));
    }
    // Blank lines between stories are behind a death as well.
    for (size_t i = story.lines.size(); i > 0 && story.lines[i - 1].empty(); --i) {
        if (lines.empty() || WIFSIGNALED(status)) lines.emplace_back();
    }
    return lines;
}

/** Shows where the lines part, with the event that they belong to. */
void printDifference(const char* path, const StoryText& story, const Lines& actual) {
    const Lines& expected = story.lines;
    const size_t shorter = std::min(expected.size(), actual.size());
    size_t at = 0;
    while (at < shorter && expected[at] == actual[at]) ++at;
    printf("%s: story %s\n", path, story.name.c_str());
    for (size_t i = at; i-- > 0;) {
        if (isOutcome(expected[i])) continue;
        printf("  %s\n", expected[i].c_str());
        break;
    }
    constexpr size_t kShown = 5;
    for (size_t i = at; i < std::min(at + kShown, expected.size()); ++i) {
        printf("- %s\n", expected[i].c_str());
    }
    for (size_t i = at; i < std::min(at + kShown, actual.size()); ++i) {
        printf("+ %s\n", actual[i].c_str());
    }
}

int run(const char* path, const char* only, bool update) {
    std::ifstream file(path);
    std::ifstream words(MCL_STORY_WORDS);
    if (!file || !words) {
        fprintf(stderr, "story_test: %s: cannot be read\n", file ? MCL_STORY_WORDS : path);
        return 2;
    }
    std::vector<StoryText> stories = readStories(file);
    Definitions definitions;
    for (std::string line; std::getline(words, line);) define(line, &definitions);
    for (const std::string& line : stories[0].lines) define(line, &definitions);
    int result = 0;
    size_t played = 0;
    for (size_t i = 1; i < stories.size(); ++i) {
        StoryText& story = stories[i];
        if (only != nullptr && story.name != only) continue;
        ++played;
        bool isPlayed = false;
        const Lines actual = replay(story, definitions, &isPlayed);
        if (!isPlayed || (!update && actual != story.lines)) printDifference(path, story, actual);
        if (!isPlayed) result = 2;
        if (!update && actual != story.lines) result = std::max(result, 1);
        if (update && isPlayed) story.lines = actual;
    }
    if (played == 0) {
        fprintf(stderr, "story_test: %s: no such story\n", only != nullptr ? only : path);
        return 2;
    }
    if (!update) return result;
    std::ofstream out(path);
    for (const StoryText& story : stories) {
        for (const std::string& line : story.lines) out << line << '\n';
    }
    return out.flush() ? result : 2;
}

}  // namespace
}  // namespace android::test

int main(int argc, char** argv) {
    const bool update = argc > 1 && strcmp(argv[1], "--update") == 0;
    const int count = argc - update;
    if (count < 2 || count > 3 || argv[1 + update][0] == '-') {
        fputs(android::test::kUsage, stderr);
        return 2;
    }
    return android::test::run(argv[1 + update], count == 3 ? argv[2 + update] : nullptr, update);
}
