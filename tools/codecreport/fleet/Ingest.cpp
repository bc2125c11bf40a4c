// SPDX-License-Identifier: Apache-2.0
#include "fleet/Ingest.h"

#include <stdio.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

#include "Analysis.h"
#include "database/ContentHash.h"
#include "output/JsonReport.h"

namespace android::codecreport {

namespace {

/** Workers read; whoever has read a log writes it, one at a time. */
class Ingester {
  public:
    Ingester(const Reference& reference, const std::vector<LogFile>& files, bool withFrames,
             bool progress, Database* database)
        : mReference(reference),
          mFiles(files),
          mWithFrames(withFrames),
          mProgress(progress),
          mDatabase(database) {}

    IngestResult run() {
        const size_t cores = std::max(1u, std::thread::hardware_concurrency());
        std::vector<std::thread> workers;
        for (size_t i = 1; i < std::min(cores, mFiles.size()); ++i) {
            workers.emplace_back([this] { work(); });
        }
        work();
        for (std::thread& worker : workers) worker.join();
        for (const LogRecord& log : mDoubles) {
            if (mDatabase->holds(log.hash)) setLabels(log);
        }
        if (mProgress) fprintf(stderr, "\r\033[K");
        return std::move(mResult);
    }

  private:
    void work() {
        while (const auto index = next()) {
            const LogFile& file = mFiles[*index];
            LogRecord log;
            log.path = file.paths.back();
            log.isMetrics = file.isMetrics;
            log.labels = file.labels;
            Analysis analysis;
            if (findAnew(*index, &log) && read(file, &analysis, &log)) write(log);
            const std::lock_guard<std::mutex> lock(mLock);
            ++mDone;
            if (mProgress) {
                fprintf(stderr, "\r%zu of %zu logs, %zu sessions\033[K", mDone, mFiles.size(),
                        mResult.sessions);
            }
        }
    }

    std::optional<size_t> next() {
        const std::lock_guard<std::mutex> lock(mLock);
        const bool isOver = mNext == mFiles.size() || !mResult.writeError.empty();
        return isOver ? std::nullopt : std::optional(mNext++);
    }

    /** False: it cannot be read, or the database holds it; its labels are set then. */
    bool findAnew(size_t index, LogRecord* log) {
        std::string error;
        const auto hash = contentHash(mFiles[index].paths, &error);
        std::unique_lock<std::mutex> lock(mLock);
        // Of equal logs the first in order is kept, however the threads run.
        mTurn.wait(lock, [&] { return mFound == index; });
        ++mFound;
        mTurn.notify_all();
        if (!hash) {
            mResult.problems.push_back(error);
            ++mResult.unread;
            return false;
        }
        log->hash = *hash;
        if (mHashes.insert(*hash).second) return !skipKnown(*log);
        ++mResult.known;
        mDoubles.push_back(*log);
        return false;
    }

    bool skipKnown(const LogRecord& log) {
        if (!mDatabase->holds(log.hash)) return false;
        ++mResult.known;
        setLabels(log);
        return true;
    }

    void setLabels(const LogRecord& log) {
        if (!mDatabase->label(log.hash, log.labels)) mResult.writeError = mDatabase->error();
    }

    bool read(const LogFile& file, Analysis* analysis, LogRecord* log) {
        const bool ok = file.isMetrics ? readMetrics(log->path, analysis)
                                       : readLogs(mReference, file.paths, false, analysis);
        if (ok) {
            log->report = toJson(*analysis);
            log->sessions = &analysis->sessions;
            if (mWithFrames) log->frames = &analysis->frames;
            log->pack();
        }
        const std::lock_guard<std::mutex> lock(mLock);
        for (const std::string& problem : analysis->problems) mResult.problems.push_back(problem);
        if (!ok) ++mResult.unread;
        return ok;
    }

    void write(const LogRecord& log) {
        const std::lock_guard<std::mutex> lock(mLock);
        // Another process may have added it meanwhile.
        if (!mResult.writeError.empty() || skipKnown(log)) return;
        if (!mDatabase->add(log)) {
            mResult.writeError = mDatabase->error();
            return;
        }
        ++mResult.added;
        mResult.sessions += log.report["sessions"].size();
    }

    const Reference& mReference;
    const std::vector<LogFile>& mFiles;
    const bool mWithFrames;
    const bool mProgress;
    std::mutex mLock;
    // Below: guarded by mLock.
    Database* const mDatabase;
    size_t mNext = 0;
    /** So many logs, in order, are known to be new or not. */
    size_t mFound = 0;
    std::condition_variable mTurn;
    std::set<std::string> mHashes;
    /** Logs that an earlier one of this run equals, in order; their labels come after its. */
    std::vector<LogRecord> mDoubles;
    size_t mDone = 0;
    IngestResult mResult;
};

}  // namespace

IngestResult ingest(const Reference& reference, const std::vector<LogFile>& files, bool withFrames,
                    bool progress, Database* database) {
    return Ingester(reference, files, withFrames, progress, database).run();
}

}  // namespace android::codecreport
