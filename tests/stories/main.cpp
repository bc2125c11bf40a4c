// SPDX-License-Identifier: Apache-2.0
// Plays the stories of a file, each in a process of its own, and compares what came out of them.
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
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

struct StoryText {
    std::string name;
    std::string text;
};

/** The file's parts: what stands before the first story has no name. */
std::vector<StoryText> readStories(std::istream& file) {
    std::vector<StoryText> stories(1);
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(kStory, 0) == 0) {
            const size_t start = strlen(kStory);
            stories.push_back({line.substr(start, line.find(':') - start), {}});
        }
        stories.back().text += line + '\n';
    }
    return stories;
}

void playAll(const std::string& text, Definitions definitions, int fd) {
    Journal& journal = Journal::instance();
    journal.open(fd);
    Stage stage;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("    ", 0) == 0) continue;  // an outcome
        journal.source(line);
        if (line.empty() || line[0] == '#' || line.rfind(kStory, 0) == 0) continue;
        if (!define(line, &definitions)) play(stage, definitions, line);
    }
    journal.setFilter("\n");  // what the end of the stage brings is no part of the story
}

/** The story with what came out of it this time; false if it could not be played to its end. */
bool replay(const std::string& story, const Definitions& definitions, std::string* text) {
    int channel[2];
    if (pipe2(channel, O_CLOEXEC) != 0) return false;
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // a story that does not end ends with its runner
        playAll(story, definitions, channel[1]);
        exit(0);
    }
    close(channel[1]);
    char buffer[4096];
    for (ssize_t got; (got = read(channel[0], buffer, sizeof(buffer))) > 0;) {
        text->append(buffer, static_cast<size_t>(got));
    }
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) *text += "    " + std::string(strsignal(WTERMSIG(status))) + '\n';
    return status == 0;
}

void printDifference(const std::string& path, const std::string& actual) {
    fflush(stdout);
    FILE* diff =
            popen(("diff -u -F '^story ' --label written --label now '" + path + "' - | head -n 40")
                          .c_str(),
                  "w");
    fputs(actual.c_str(), diff);
    pclose(diff);
}

int run(const char* path, const char* only, bool update) {
    std::ifstream file(path);
    std::ifstream words(MCL_STORY_WORDS);
    if (!file || !words) {
        fprintf(stderr, "story_test: %s: cannot be read\n", file ? MCL_STORY_WORDS : path);
        return 2;
    }
    const std::vector<StoryText> stories = readStories(file);
    Definitions definitions;
    for (std::string line; std::getline(words, line);) define(line, &definitions);
    std::istringstream head(stories[0].text);
    for (std::string line; std::getline(head, line);) define(line, &definitions);
    std::string written;
    std::string actual;
    size_t played = 0;
    bool arePlayed = true;
    for (const StoryText& story : stories) {
        written += story.text;
        if (story.name.empty() || (only != nullptr && story.name != only)) {
            actual += story.text;
        } else {
            arePlayed &= replay(story.text, definitions, &actual);
            ++played;
        }
    }
    if (played == 0) {
        fprintf(stderr, "story_test: %s: no such story\n", only != nullptr ? only : path);
        return 2;
    }
    if (update && arePlayed) return std::ofstream(path) << actual << std::flush ? 0 : 2;
    if (actual != written) printDifference(path, actual);
    return arePlayed ? actual != written : 2;
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
