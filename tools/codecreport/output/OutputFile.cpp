// SPDX-License-Identifier: Apache-2.0
#include "output/OutputFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <tuple>
#include <utility>

namespace android::codecreport {

namespace {

namespace fs = std::filesystem;

/** A file by device and inode; one that is not there yet, by its folder and name. */
using Identity = std::tuple<dev_t, ino_t, std::string>;

/** The name behind all links; what is not there yet keeps its own. */
std::string resolved(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? path : whole.string();
}

/** Nothing for what may be read and written at will: devices, pipes, what cannot be reached. */
std::optional<Identity> identityOf(const std::string& path, int standardFd) {
    struct stat status = {};
    if (path == "-" ? fstat(standardFd, &status) == 0 : stat(path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) return std::nullopt;
        return Identity(status.st_dev, status.st_ino, "");
    }
    const fs::path target = resolved(path);
    if (stat(target.parent_path().c_str(), &status) != 0) return std::nullopt;
    return Identity(status.st_dev, status.st_ino, target.filename());
}

}  // namespace

OutputFile::~OutputFile() {
    if (mFile != nullptr && mFile != stdout) fclose(mFile);
    if (!mAside.empty()) unlink(mAside.c_str());
}

bool OutputFile::fail() {
    if (mError.empty()) {
        mError = (mPath == "-" ? "standard output" : mPath) + ": " + strerror(errno);
    }
    return false;
}

/** As the file will be: the mode of what was there, else what the umask leaves. */
bool OutputFile::openAside() {
    struct stat status = {};
    const bool exists = stat(mTarget.c_str(), &status) == 0;
    if (exists && access(mTarget.c_str(), W_OK) != 0) return fail();
    const mode_t mask = umask(0);
    umask(mask);
    std::string aside = mTarget + ".XXXXXX";
    const int fd = mkostemp(aside.data(), O_CLOEXEC);
    if (fd < 0) return fail();
    mAside = std::move(aside);
    fchmod(fd, exists ? status.st_mode & 07777 : 0666 & ~mask);
    mFile = fdopen(fd, "w");
    return mFile != nullptr || fail();
}

bool OutputFile::open() {
    if (mPath == "-") {
        mFile = stdout;
        return true;
    }
    mTarget = resolved(mPath);
    struct stat status = {};
    const bool exists = stat(mTarget.c_str(), &status) == 0;
    if (!exists || S_ISREG(status.st_mode)) return openAside();
    mFile = fopen(mTarget.c_str(), "we");
    return mFile != nullptr || fail();
}

bool OutputFile::write(std::string_view bytes) {
    return fwrite(bytes.data(), 1, bytes.size(), mFile) == bytes.size() || fail();
}

bool OutputFile::commit() {
    if (!mError.empty()) return false;
    FILE* file = std::exchange(mFile, nullptr);
    // Of standard output, what others wrote counts too.
    if (ferror(file) != 0 || (file == stdout ? fflush(file) : fclose(file)) != 0) return fail();
    if (mAside.empty()) return true;
    if (rename(mAside.c_str(), mTarget.c_str()) != 0) return fail();
    mAside.clear();
    return true;
}

bool writeOutput(const std::string& path, std::string_view bytes, std::string* error) {
    OutputFile file(path);
    if (file.open() && file.write(bytes) && file.commit()) return true;
    *error = file.error();
    return false;
}

std::string outputConflict(const std::vector<std::string>& inputs,
                           const std::vector<std::string>& outputs) {
    for (size_t i = 0; i < outputs.size(); ++i) {
        if (outputs[i].empty()) continue;
        const auto identity = identityOf(outputs[i], STDOUT_FILENO);
        if (!identity) continue;
        for (const std::string& input : inputs) {
            if (!input.empty() && identityOf(input, STDIN_FILENO) == identity) {
                return outputs[i] + ": is an input, and would be lost";
            }
        }
        for (size_t other = 0; other < i; ++other) {
            if (!outputs[other].empty() && identityOf(outputs[other], STDOUT_FILENO) == identity) {
                return outputs[i] + ": two outputs cannot be in one file";
            }
        }
    }
    return {};
}

}  // namespace android::codecreport
