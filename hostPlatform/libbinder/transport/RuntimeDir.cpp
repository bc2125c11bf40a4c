// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "Binder"

#include "RuntimeDir.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <inttypes.h>
#include <log/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <memory>

namespace android::transport {

using base::unique_fd;

namespace {

constexpr char kPeers[] = "peers";
constexpr char kNames[] = "names";
constexpr char kUnfinished[] = ".new";
constexpr int kBacklog = 64;
// How long a peer may leave its queue of connections full.
constexpr int kConnectTries = 200;
constexpr useconds_t kConnectPauseUs = 10 * 1000;

std::string choosePath() {
    if (const char* const chosen = getenv("HOSTBINDER_DIR"); chosen != nullptr) return chosen;
    const char* const runtime = getenv("XDG_RUNTIME_DIR");
    struct stat info;
    if (runtime != nullptr && runtime[0] == '/' && stat(runtime, &info) == 0 &&
        S_ISDIR(info.st_mode) && info.st_uid == geteuid()) {
        return std::string(runtime) + "/hostbinder";
    }
    return "/tmp/hostbinder-" + std::to_string(geteuid());
}

std::string fileNameOf(const PeerId& peer) {
    char name[40];
    snprintf(name, sizeof(name), "%" PRIu32 "-%016" PRIx64, peer.pid, peer.nonce);
    return name;
}

// Service names may hold a slash and may start with a dot.
std::string fileNameOf(const std::string& service) {
    std::string name;
    for (const char c : service) {
        if (c == '/' || c == '%' || (c == '.' && name.empty())) {
            char escaped[4];
            snprintf(escaped, sizeof(escaped), "%%%02X", static_cast<unsigned char>(c));
            name += escaped;
        } else {
            name += c;
        }
    }
    return name;
}

std::string serviceOf(const std::string& fileName) {
    std::string service;
    for (size_t i = 0; i < fileName.size(); i++) {
        unsigned byte = 0;
        if (fileName[i] == '%' && sscanf(fileName.c_str() + i + 1, "%2x", &byte) == 1) {
            service += static_cast<char>(byte);
            i += 2;
        } else {
            service += fileName[i];
        }
    }
    return service;
}

// A path of bounded length to a file in an open folder: a socket's address has room for 107 bytes.
sockaddr_un addressOf(const unique_fd& folder, const std::string& fileName) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof(address.sun_path), "/proc/self/fd/%d/%s", folder.get(),
             fileName.c_str());
    return address;
}

unique_fd newSocket() {
    return unique_fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

int connectOnce(const unique_fd& socket, const unique_fd& folder, const std::string& fileName) {
    const sockaddr_un address = addressOf(folder, fileName);
    return TEMP_FAILURE_RETRY(
            connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
}

std::vector<std::string> filesIn(const unique_fd& folder) {
    std::vector<std::string> files;
    const int fd = fcntl(folder.get(), F_DUPFD_CLOEXEC, 0);
    DIR* const dir = fd >= 0 ? fdopendir(fd) : nullptr;
    if (dir == nullptr) return files;
    rewinddir(dir);  // the duplicate shares its position with the original
    while (const dirent* const entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") files.push_back(name);
    }
    closedir(dir);
    return files;
}

bool readAddress(const unique_fd& names, const std::string& fileName, ObjectAddress* address) {
    const unique_fd file(openat(names.get(), fileName.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (file.get() < 0) return false;
    char line[80];
    const ssize_t size = TEMP_FAILURE_RETRY(read(file.get(), line, sizeof(line) - 1));
    if (size <= 0) return false;
    line[size] = '\0';
    return sscanf(line, "%" SCNu32 "-%" SCNx64 " %" SCNu64, &address->peer.pid,
                  &address->peer.nonce, &address->object) == 3;
}

// Held until it is closed, by us or by our death.
unique_fd takeLock(const unique_fd& dir) {
    unique_fd lock(openat(dir.get(), "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (lock.get() >= 0) TEMP_FAILURE_RETRY(flock(lock.get(), LOCK_EX));
    return lock;
}

// Removes the sockets that nobody listens on any more and the names that they hosted. The lock is
// held, so none of them is being made at this moment.
void sweep(const unique_fd& peers, const unique_fd& names) {
    for (const std::string& file : filesIn(peers)) {
        const unique_fd socket = newSocket();
        if (connectOnce(socket, peers, file) != 0 && errno == ECONNREFUSED) {
            unlinkat(peers.get(), file.c_str(), 0);
        }
    }
    for (const std::string& file : filesIn(names)) {
        ObjectAddress address;
        if (readAddress(names, file, &address) &&
            faccessat(peers.get(), fileNameOf(address.peer).c_str(), F_OK, 0) == 0) {
            continue;
        }
        unlinkat(names.get(), file.c_str(), 0);
    }
}

}  // namespace

RuntimeDir::RuntimeDir() : mPath(choosePath()) {}

bool RuntimeDir::create() const {
    if (!isEnabled()) return false;
    if (mkdir(mPath.c_str(), 0700) != 0 && errno != EEXIST) {
        ALOGE("Cannot make %s: %s", mPath.c_str(), strerror(errno));
        return false;
    }
    const unique_fd dir = open();
    if (dir.get() < 0) return false;
    mkdirat(dir.get(), kPeers, 0700);
    mkdirat(dir.get(), kNames, 0700);
    return true;
}

// Invalid, without a word, if there is no such folder: then nobody has anything to be found there.
unique_fd RuntimeDir::open() const {
    if (!isEnabled()) return unique_fd();
    unique_fd dir(::open(mPath.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info;
    if (dir.get() < 0 || fstat(dir.get(), &info) != 0) {
        if (errno != ENOENT) ALOGE("Cannot open %s: %s", mPath.c_str(), strerror(errno));
        return unique_fd();
    }
    if (info.st_uid != geteuid() || (info.st_mode & 077) != 0) {
        ALOGE("%s must belong to user %d and have mode 0700", mPath.c_str(), geteuid());
        return unique_fd();
    }
    return dir;
}

unique_fd RuntimeDir::openFolder(const char* folder) const {
    const unique_fd dir = open();
    if (dir.get() < 0) return unique_fd();
    return unique_fd(openat(dir.get(), folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

unique_fd RuntimeDir::listenAs(const PeerId& self) const {
    if (!create()) return unique_fd();
    const unique_fd dir = open();
    if (dir.get() < 0) return unique_fd();
    const unique_fd lock = takeLock(dir);
    const unique_fd peers = openFolder(kPeers);
    sweep(peers, openFolder(kNames));

    unique_fd socket = newSocket();
    const sockaddr_un address = addressOf(peers, fileNameOf(self));
    if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(socket.get(), kBacklog) != 0) {
        ALOGE("Cannot listen in %s: %s", mPath.c_str(), strerror(errno));
        return unique_fd();
    }
    return socket;
}

unique_fd RuntimeDir::connectTo(const PeerId& peer) const {
    const unique_fd peers = openFolder(kPeers);
    if (peers.get() < 0) return unique_fd();
    unique_fd socket = newSocket();
    const std::string fileName = fileNameOf(peer);
    int result = connectOnce(socket, peers, fileName);
    for (int i = 0; result != 0 && errno == EAGAIN && i < kConnectTries; i++) {
        usleep(kConnectPauseUs);
        result = connectOnce(socket, peers, fileName);
    }
    ucred credentials;
    if (result != 0 || !readPeerCredentials(socket.get(), &credentials)) return unique_fd();
    return socket;
}

bool RuntimeDir::publish(const std::string& name, const ObjectAddress& address) const {
    if (!create()) return false;
    const unique_fd dir = open();
    if (dir.get() < 0) return false;
    const unique_fd lock = takeLock(dir);
    const unique_fd names = openFolder(kNames);
    const unique_fd file(openat(names.get(), kUnfinished,
                                O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file.get() < 0 ||
        dprintf(file.get(), "%s %" PRIu64 "\n", fileNameOf(address.peer).c_str(), address.object) <
                0 ||
        renameat(names.get(), kUnfinished, names.get(), fileNameOf(name).c_str()) != 0) {
        ALOGE("Cannot publish %s in %s: %s", name.c_str(), mPath.c_str(), strerror(errno));
        return false;
    }
    return true;
}

bool RuntimeDir::find(const std::string& name, ObjectAddress* address) const {
    const unique_fd names = openFolder(kNames);
    return names.get() >= 0 && readAddress(names, fileNameOf(name), address);
}

std::vector<std::string> RuntimeDir::names() const {
    std::vector<std::string> found;
    const unique_fd folder = openFolder(kNames);
    if (folder.get() < 0) return found;
    for (const std::string& file : filesIn(folder)) {
        if (file != kUnfinished) found.push_back(serviceOf(file));
    }
    return found;
}

void RuntimeDir::withdraw(const PeerId& self) const {
    const unique_fd dir = open();
    if (dir.get() < 0) return;
    const unique_fd lock = takeLock(dir);
    const unique_fd names = openFolder(kNames);
    for (const std::string& file : filesIn(names)) {
        ObjectAddress address;
        if (readAddress(names, file, &address) && address.peer == self) {
            unlinkat(names.get(), file.c_str(), 0);
        }
    }
    unlinkat(openFolder(kPeers).get(), fileNameOf(self).c_str(), 0);
}

bool readPeerCredentials(int fd, ucred* credentials) {
    socklen_t size = sizeof(*credentials);
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, credentials, &size) != 0) return false;
    if (credentials->uid == geteuid()) return true;
    ALOGW("Refused process %d of user %d", credentials->pid, credentials->uid);
    return false;
}

}  // namespace android::transport
