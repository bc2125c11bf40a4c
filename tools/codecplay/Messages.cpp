// SPDX-License-Identifier: Apache-2.0
#include "Messages.h"

#include <stdio.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

namespace android::codecplay {

namespace {

std::mutex gLock;
std::atomic<bool> gAllowed{false};
bool gShown = false;

void clear_l() {
    if (gShown) fputs("\r\033[K", stderr);
    gShown = false;
}

/** The beginning of a text that so many columns hold, in whole characters of UTF-8. */
std::string fitted(const std::string& text, size_t columns) {
    size_t end = 0;
    for (size_t used = 0; end < text.size(); ++end) {
        const bool startsCharacter = (text[end] & 0xC0) != 0x80;
        if (startsCharacter && ++used > columns) break;
    }
    return text.substr(0, end);
}

}  // namespace

void complain(const std::string& what, const std::string& text) {
    std::lock_guard<std::mutex> lock(gLock);
    clear_l();
    fprintf(stderr, "codecplay: %s: %s\n", what.c_str(), text.c_str());
}

void showProgress(const std::string& text) {
    std::lock_guard<std::mutex> lock(gLock);
    clear_l();
    if (!gAllowed || text.empty()) return;
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    // The last column stays free: a cursor behind it makes some terminals begin a line.
    fputs(fitted(text, known ? size.ws_col - 1U : 79U).c_str(), stderr);
    fflush(stderr);
    gShown = true;
}

void allowProgress(bool allowed) {
    gAllowed = allowed && isatty(STDERR_FILENO);
}

bool progressAllowed() {
    return gAllowed;
}

}  // namespace android::codecplay
