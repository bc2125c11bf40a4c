// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

/** What the judging of a session comes to. Times are microseconds on the log's timeline. */
namespace android::codecreport {

/** Who held pictures up. */
enum class Cause {
    INPUT_STARVED,
    DECRYPTION,
    CODEC,
    MESSAGE_DELAY,
    APPLICATION,
    DISPLAY_QUEUE,
    DISPLAY_RATE,
    UNKNOWN,
    COUNT,
};
constexpr size_t kCauseCount = static_cast<size_t>(Cause::COUNT);
/** "input_starved", ... as in the JSON. */
const char* toString(Cause cause);
/** "input starved", ... as in a sentence. */
const char* inWords(Cause cause);

/** What the session was doing when an incident began. */
enum class Place { PLAYBACK, START, SEEK, FLUSH, END };
const char* toString(Place place);

/** Pictures that stood too long, came late or were never shown, and belong together. */
struct Incident {
    /** Counts from 1 in the order of time, over all incidents of the session. */
    uint64_t id = 0;
    /** From when the first picture was due to when playback was in time again. */
    int64_t startUs = 0;
    int64_t endUs = 0;
    /** Media time of the first picture that was not in time. */
    int64_t ptsUs = 0;
    /** How long pictures stood beyond their time. */
    int64_t stoodMs = 0;
    int64_t neverShown = 0;
    int64_t late = 0;
    Cause cause = Cause::UNKNOWN;
    /** Each cause's share of the lost time; they sum up to 1. */
    std::array<double, kCauseCount> shares{};
    /** One sentence with the numbers that speak for the causes. */
    std::string evidence;
    Place place = Place::PLAYBACK;
    /** No picture came any more. */
    bool openEnded = false;
};

struct CauseTotal {
    /** Incidents that it is the main cause of. */
    uint64_t incidents = 0;
    /** Its share of the time stood and of the pictures lost in all incidents. */
    double stoodMs = 0;
    double neverShown = 0;
    double share = 0;
};

/** Steady playback's own figures; what the log does not tell is empty. */
struct Cadence {
    std::optional<double> contentFps;
    std::optional<double> displayHz;
    /** Refreshes that each picture stays for, repeating: "3:2", "2", "3:2:3:2:2". */
    std::string pattern;
    std::optional<bool> even;
    /** Pictures that were shown a refresh early or late. */
    std::optional<uint64_t> mistimed;
    std::optional<double> vsyncJitterMs;
};

enum class Word { SMOOTH, STUTTERED, BROKE_OFF, CANNOT_TELL };
const char* toString(Word word);

/** Pictures that stood longer than kStandingMs beyond their time. */
struct Standing {
    static constexpr int64_t kLeastMs = 250;
    uint64_t count = 0;
    int64_t totalMs = 0;
    int64_t longestMs = 0;
    int64_t longestAtUs = 0;
};

/** The judgement on a session. */
struct Judgement {
    Word word = Word::CANNOT_TELL;
    std::string sentence;
    /** What would have to be logged to tell; empty: nothing. */
    std::string missing;
    /** Time in which pictures were due. */
    std::optional<int64_t> playbackMs;
    /** In order of time; the worst kMaxIncidents of all. */
    std::vector<Incident> incidents;
    uint64_t incidentCount = 0;
    Standing standing;
    std::array<CauseTotal, kCauseCount> causes;
    Cadence cadence;
    std::optional<uint64_t> shown;
    std::optional<uint64_t> neverShown;
    /** Keys of figures of which only a part was logged. */
    std::vector<std::string> atLeast;
};
constexpr size_t kMaxIncidents = 1000;

/** How a frame fared. */
enum class Jank { NONE, LATE, DROPPED, REPLACED, STOOD };
const char* toString(Jank jank);

}  // namespace android::codecreport
