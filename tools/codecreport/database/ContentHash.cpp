// SPDX-License-Identifier: Apache-2.0
#include "database/ContentHash.h"

#include <inttypes.h>
#include <stdio.h>
#include <sys/stat.h>
#include <xxhash.h>

#include <memory>

#include "reading/LineReader.h"

namespace android::codecreport {

namespace {

/** Logs are read twice, to know and then to judge them. */
bool canBeReadAgain(const std::string& path) {
    struct stat status = {};
    return path != "-" && (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode));
}

}  // namespace

std::optional<std::string> contentHash(const std::vector<std::string>& files, std::string* error) {
    struct StateFree {
        void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
    };
    const std::unique_ptr<XXH3_state_t, StateFree> state(XXH3_createState());
    XXH3_128bits_reset(state.get());
    for (const std::string& file : files) {
        LineReader reader;
        if (!canBeReadAgain(file)) {
            *error = file + ": is a pipe or a device, of which a database cannot be filled";
            return std::nullopt;
        }
        if (!reader.open(file)) {
            *error = file + ": " + reader.error();
            return std::nullopt;
        }
        for (std::string_view line; reader.next(&line);) {
            XXH3_128bits_update(state.get(), line.data(), line.size());
            XXH3_128bits_update(state.get(), "\n", 1);
        }
    }
    const XXH128_hash_t hash = XXH3_128bits_digest(state.get());
    char text[33];
    snprintf(text, sizeof(text), "%016" PRIx64 "%016" PRIx64, static_cast<uint64_t>(hash.high64),
             static_cast<uint64_t>(hash.low64));
    return text;
}

}  // namespace android::codecreport
