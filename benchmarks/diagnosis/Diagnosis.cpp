// SPDX-License-Identifier: Apache-2.0
#include <benchmarks/diagnosis/Diagnosis.h>

#include <math.h>
#include <stdio.h>

#include <algorithm>

#include <tools/codecreport/reading/SessionBuilder.h>

namespace android::test {

namespace {

using codecreport::Cause;
using codecreport::Incident;
using codecreport::Session;

/** What a fault of so many milliseconds does to the display shows within this. */
constexpr double kEffectMs = 2'500;

template <typename T>
T pick(std::mt19937& random, std::initializer_list<T> values) {
    return *(values.begin() + random() % values.size());
}

double between(std::mt19937& random, double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(random);
}

Setup anySetup(std::mt19937& random) {
    Setup setup;
    setup.omx = random() % 2 != 0;
    setup.mask = pick(random, {"0x407", "0x40f", "0x427"});
    setup.fps = pick(random, {24.0, 25.0, 30.0, 50.0, 60.0, 24000 / 1001.0, 30000 / 1001.0});
    setup.displayHz = pick(random, {60.0, 60.0, 60.0, 50.0, 90.0, 120.0});
    if (setup.displayHz < setup.fps) setup.displayHz = 60;
    // Half a refresh off, rounding is a coin toss, for an application as well.
    setup.phase = between(random, -0.4, 0.4);
    setup.snaps = random() % 4 != 0;
    setup.frames = static_cast<int>(setup.fps * 8);
    setup.reorders = random() % 3 == 0;
    setup.inputSlots = setup.reorders ? pick(random, {4, 6, 8}) : pick(random, {2, 4, 8});
    setup.depth = pick(random, {0, 0, 1, 2});
    if (setup.depth >= setup.inputSlots) setup.depth = 0;
    setup.outputBuffers = pick(random, {6, 8, 12});
    const double stepMs = 1000 / setup.fps;
    setup.decryptMs = between(random, 0.5, std::min(5.0, stepMs / 5));
    setup.decodeMs = between(random, 2, stepMs * 0.5);
    setup.messageMs = between(random, 0, 1.5);
    setup.leadRefreshes = pick(random, {1, 2, 3});
    setup.oneThread = random() % 2 != 0;
    setup.liveAheadMs = random() % 4 == 0 ? 500 : 0;
    return setup;
}

FaultKind anyKind(std::mt19937& random) {
    return static_cast<FaultKind>(random() % static_cast<int>(FaultKind::SLOW_DISPLAY));
}

}  // namespace

Cause causeOf(FaultKind kind) {
    static constexpr Cause kCauses[] = {
            Cause::INPUT_STARVED, Cause::DECRYPTION,    Cause::DECRYPTION,  Cause::CODEC,
            Cause::CODEC,         Cause::MESSAGE_DELAY, Cause::APPLICATION, Cause::APPLICATION,
            Cause::DISPLAY_QUEUE, Cause::DISPLAY_QUEUE, Cause::DISPLAY_RATE};
    return kCauses[static_cast<int>(kind)];
}

const char* toString(FaultKind kind) {
    static constexpr const char* kNames[] = {"starve",       "slow decrypt",   "slow decrypts",
                                             "slow decode",  "slow decodes",   "late message",
                                             "stall",        "needless drops", "blocked queue",
                                             "kept buffers", "slow display"};
    return kNames[static_cast<int>(kind)];
}

Scenario healthyScenario(std::mt19937& random) {
    Scenario scenario{"healthy", anySetup(random)};
    Setup& setup = scenario.setup;
    switch (random() % 5) {
        case 0:
            setup.seekAt = setup.frames / 2;
            break;
        case 1:
            setup.flushAt = setup.frames / 2;
            break;
        case 2:
            setup.pauseAt = setup.frames / 2;
            setup.pauseMs = 1'200 + random() % 8'000;
            break;
        default:
            break;
    }
    return scenario;
}

Scenario faultyScenario(std::mt19937& random) {
    Scenario scenario{"", anySetup(random)};
    Setup& setup = scenario.setup;
    setup.rebases = random() % 6 == 0;
    setup.dropsLate = random() % 4 != 0;
    if (random() % 16 == 0) {
        setup.fps = pick(random, {60.0, 50.0, 30.0});
        setup.frames = static_cast<int>(setup.fps * 8);
        setup.displayHz = pick(random, {24.0, 25.0, 30.0, 48.0, 50.0});
        if (setup.displayHz >= setup.fps) setup.displayHz = 25;
        setup.snaps = true;
        scenario.name = "whole";
        setup.faults = {{FaultKind::SLOW_DISPLAY, 0, 8'000}};
        return scenario;
    }
    const int middle = setup.frames / 2;
    int at = middle;
    switch (random() % 5) {
        case 0:
            scenario.name = "start";
            at = 4 + random() % 8;
            break;
        case 1:
            scenario.name = "seek";
            setup.seekAt = middle - 1 - random() % 8;
            break;
        case 2:
            scenario.name = "flush";
            setup.flushAt = middle - 1 - random() % 8;
            break;
        case 3:
            scenario.name = "end";
            at = setup.frames - 4 - random() % 10;
            break;
        default:
            scenario.name = "middle";
            break;
    }
    const int64_t ms = random() % 3 == 0 ? 30 + random() % 170 : 200 + random() % 1'200;
    setup.faults = {{anyKind(random), at, ms}};
    // An application that goes on from where it stopped a second ago has paused.
    if (setup.faults[0].kind == FaultKind::STALL && ms > 900) setup.rebases = false;
    if (random() % 3 == 0 && scenario.name != "end") {
        // A second one, at once or in a while.
        const int apart = random() % 2 == 0 ? 1 : static_cast<int>(setup.fps * 2.5);
        setup.faults.push_back(
                {anyKind(random), at + apart, static_cast<int64_t>(200 + random() % 800)});
        scenario.name += apart == 1 ? ", double at once" : ", double";
    } else if (scenario.name == "end" && random() % 3 == 0) {
        setup.faults[0].kind =
                pick(random, {FaultKind::STARVE, FaultKind::SLOW_DECODE, FaultKind::STALL});
        setup.faults[0].ms = 60'000;
        setup.stops = setup.faults[0].kind != FaultKind::STALL;
        scenario.name = "never ends";
    }
    return scenario;
}

std::unique_ptr<Session> judged(const Simulated& simulated) {
    static const codecreport::Reference& reference = *new codecreport::Reference;
    codecreport::FrameStore store;
    codecreport::SessionBuilder builder(reference, &store);
    for (const Simulated::Line& logged : simulated.log) {
        codecreport::LogLine line;
        line.hasTime = true;
        line.timeUs = 1'770'000'000'000'000 + logged.timeMs * 1000;
        line.pid = 4321;
        line.tid = 4330;
        line.tag = logged.line.tag;
        line.text = logged.line.text;
        builder.onLine(line);
    }
    auto sessions = builder.finish();
    return sessions.empty() ? nullptr : std::move(sessions[0]);
}

namespace {

constexpr int64_t kZeroUs = 1'770'000'000'000'000;

double msOf(int64_t us) {
    return (us - kZeroUs) / 1000.0;
}

bool overlaps(const Incident& incident, double fromMs, double toMs) {
    return msOf(incident.startUs) <= toMs && msOf(incident.endUs) >= fromMs;
}

std::string describe(const Scenario& scenario, const Session& session) {
    const Setup& s = scenario.setup;
    char text[400];
    snprintf(text, sizeof(text),
             "%s: %s %.3f fps %.0f Hz %s phase %.2f%s%s%s%s%s depth %d slots %d buffers %d decode "
             "%.1f lead %d",
             scenario.name.c_str(), s.omx ? "omx" : "c2", s.fps, s.displayHz,
             s.snaps ? "snapped" : "raw", s.phase, s.reorders ? " reordered" : "",
             s.dropsLate ? "" : " shows late", s.rebases ? " rebases" : "",
             s.oneThread ? " one thread" : "", s.liveAheadMs > 0 ? " live" : "", s.depth,
             s.inputSlots, s.outputBuffers, s.decodeMs, s.leadRefreshes);
    std::string all = text;
    for (const Fault& fault : s.faults) {
        all += std::string("; ") + toString(fault.kind) + " " + std::to_string(fault.ms) +
               " ms at " + std::to_string(fault.frame);
    }
    for (const Incident& incident : session.judgement.incidents) {
        char part[300];
        snprintf(part, sizeof(part), "\n    #%d %.0f +%.0f stood %d lost %d late %d %s: %s",
                 static_cast<int>(incident.id), msOf(incident.startUs),
                 (incident.endUs - incident.startUs) / 1000.0, static_cast<int>(incident.stoodMs),
                 static_cast<int>(incident.neverShown), static_cast<int>(incident.late),
                 codecreport::toString(incident.cause), incident.evidence.c_str());
        all += part;
    }
    return all;
}

}  // namespace

void Score::addHealthy(const Scenario& scenario) {
    const Simulated simulated = simulate(scenario.setup);
    // A pipeline that is too short for its stream is not healthy.
    if (!simulated.seen.empty()) return;
    const auto session = judged(simulated);
    ++healthy.all;
    if (session != nullptr && session->judgement.word == codecreport::Word::SMOOTH) {
        ++healthy.right;
    } else if (session != nullptr) {
        misses.push_back(describe(scenario, *session));
    }
}

void Score::addFaulty(const Scenario& scenario) {
    const Simulated simulated = simulate(scenario.setup);
    const auto session = judged(simulated);
    Setup sound = scenario.setup;
    sound.faults.clear();
    const bool isRate = scenario.setup.faults[0].kind == FaultKind::SLOW_DISPLAY;
    if (session == nullptr || (!isRate && !simulate(sound).seen.empty())) return;
    for (size_t i = 0; i < scenario.setup.faults.size(); ++i) {
        addFault(scenario, simulated, i, *session);
    }
    for (const Seen& seen : simulated.seen) {
        if (seen.stoodMs < 250) continue;
        ++standing.all;
        bool found = false;
        for (const Incident& incident : session->judgement.incidents) {
            found |= overlaps(incident, seen.fromMs, seen.toMs) &&
                     incident.stoodMs >= seen.stoodMs * 0.7 - 20;
        }
        standing.right += found;
        if (!found)
            misses.push_back("stood " + std::to_string(seen.stoodMs) + " at " +
                             std::to_string(seen.fromMs) + " " + describe(scenario, *session));
    }
}

void Score::addFault(const Scenario& scenario, const Simulated& simulated, size_t fault,
                     const Session& session) {
    const Fault& injected = scenario.setup.faults[fault];
    const bool isRate = injected.kind == FaultKind::SLOW_DISPLAY;
    const double fromMs = isRate ? 0 : simulated.faultMs[fault];
    if (fromMs < 0) return;
    // Did the viewer see anything of it? Without it, that would be missing.
    Setup without = scenario.setup;
    without.faults.erase(without.faults.begin() + fault);
    const double extraMs = simulated.badnessMs() - simulate(without).badnessMs();
    if (!isRate && extraMs < std::max(simulated.toleranceMs, injected.ms * 0.1)) {
        ++absorbed;
        return;
    }
    const double toMs = isRate ? 1e9 : fromMs + std::min<double>(injected.ms, 10'000) + kEffectMs;
    const Cause truth = causeOf(injected.kind);
    const Incident* worst = nullptr;
    bool named = false;
    for (const Incident& incident : session.judgement.incidents) {
        if (!overlaps(incident, fromMs - 50, toMs)) continue;
        const auto badness = [](const Incident& i) { return i.stoodMs + 20 * i.neverShown; };
        if (worst == nullptr || badness(incident) > badness(*worst)) worst = &incident;
        named |= incident.shares[static_cast<size_t>(truth)] > 0;
    }
    Cause said = worst == nullptr ? Cause::COUNT : worst->cause;
    // Of two faults, each has to be named.
    if (scenario.setup.faults.size() > 1 && named) said = truth;
    ++confusion[truth][said];
    ++kinds[injected.kind];
    Cell& cell = injected.ms >= 200 ? large : small;
    ++cell.all;
    cell.right += said == truth;
    if (said != truth) {
        misses.push_back(std::string("fault ") + std::to_string(fault) + " at " +
                         std::to_string(static_cast<int>(fromMs)) + " seen as " +
                         (said == Cause::COUNT ? "nothing" : codecreport::toString(said)) + "; " +
                         describe(scenario, session));
    }
}

}  // namespace android::test
