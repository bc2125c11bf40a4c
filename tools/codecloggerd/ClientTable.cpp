// SPDX-License-Identifier: Apache-2.0
#include "ClientTable.h"

#include <algorithm>
#include <utility>

namespace android::codecloggerd {

const ClientEntry& ClientTable::add(ClientEntry entry) {
    remove(entry.hostPid, entry.id);
    entry.handle = ++mLastHandle;
    mRecords.push_back({std::move(entry), ++mLastSignOfLife});
    return mRecords.back().entry;
}

std::optional<ClientEntry> ClientTable::remove(pid_t hostPid, int64_t id) {
    const auto record = std::find_if(mRecords.begin(), mRecords.end(), [&](const Record& r) {
        return r.entry.hostPid == hostPid && r.entry.id == id;
    });
    if (record == mRecords.end()) return std::nullopt;
    ClientEntry removed = std::move(record->entry);
    mRecords.erase(record);
    return removed;
}

std::vector<ClientEntry> ClientTable::remove(const wp<IBinder>& binder) {
    std::vector<ClientEntry> removed;
    for (const Record& record : mRecords) {
        if (binder == record.entry.client) removed.push_back(record.entry);
    }
    for (const ClientEntry& entry : removed) remove(entry.hostPid, entry.id);
    return removed;
}

ClientTable::Record* ClientTable::findRecord(pid_t callingPid, int64_t id) {
    Record* newest = nullptr;
    for (Record& record : mRecords) {
        if (record.entry.id != id) continue;
        if (record.entry.hostPid == callingPid) return &record;
        newest = &record;
    }
    return newest;
}

const ClientEntry* ClientTable::find(pid_t callingPid, int64_t id) const {
    const Record* const record = const_cast<ClientTable*>(this)->findRecord(callingPid, id);
    return record != nullptr ? &record->entry : nullptr;
}

void ClientTable::noteFirstFrame(pid_t callingPid, int64_t id, int64_t nowMs) {
    Record* const record = findRecord(callingPid, id);
    if (record == nullptr) return;
    record->entry.firstFrameMs = nowMs;
    record->signOfLife = ++mLastSignOfLife;
}

void ClientTable::noteLateOutput(pid_t callingPid, int64_t id, int64_t delayMs) {
    Record* const record = findRecord(callingPid, id);
    if (record == nullptr) return;
    ++record->entry.lateOutputs;
    record->entry.longestDelayMs = std::max(record->entry.longestDelayMs, delayMs);
    record->signOfLife = ++mLastSignOfLife;
}

std::vector<ClientEntry> ClientTable::videoClients() const {
    std::vector<Record> records;
    std::copy_if(mRecords.begin(), mRecords.end(), std::back_inserter(records),
                 [](const Record& r) { return r.entry.isVideo; });
    std::sort(records.begin(), records.end(),
              [](const Record& a, const Record& b) { return a.signOfLife > b.signOfLife; });
    std::vector<ClientEntry> clients;
    clients.reserve(records.size());
    for (Record& record : records) clients.push_back(std::move(record.entry));
    if (!clients.empty()) clients.front().isActive = true;
    return clients;
}

const ClientEntry* ClientTable::oldestAudioClient() const {
    const auto record = std::find_if(mRecords.begin(), mRecords.end(),
                                     [](const Record& r) { return !r.entry.isVideo; });
    return record != mRecords.end() ? &record->entry : nullptr;
}

std::vector<ClientEntry> ClientTable::all() const {
    const std::vector<ClientEntry> video = videoClients();
    std::vector<ClientEntry> clients;
    for (const Record& record : mRecords) {
        clients.push_back(record.entry);
        clients.back().isActive = !video.empty() && video.front().handle == record.entry.handle;
    }
    return clients;
}

}  // namespace android::codecloggerd
