// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>
#include <sys/types.h>

#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include <android/codeclogger/ClientEntry.h>
#include <binder/IBinder.h>

namespace android::codecloggerd {

using codeclogger::ClientEntry;

/**
 * The registered clients, oldest first. Not thread-safe.
 *
 * A client id is an address in the client's process, so a client is known by its process and its id
 * together. Who asks with the id alone, as observers must, gets the newest client of that id: two
 * processes rarely have an object at the same place, and then the older one is the likelier to be
 * forgotten. The same goes for one-way calls on a device, which do not tell their caller's process.
 */
class ClientTable {
  public:
    /** Gives the entry its handle. An entry of the same process and id is replaced. */
    const ClientEntry& add(ClientEntry entry);
    std::optional<ClientEntry> remove(pid_t hostPid, int64_t id);
    /** Removes the clients that `binder` stood for. */
    std::vector<ClientEntry> remove(const wp<IBinder>& binder);

    /** Null when there is none; valid until the next change. */
    const ClientEntry* find(pid_t callingPid, int64_t id) const;

    // Signs of life; nothing happens when there is no such client.
    void noteFirstFrame(pid_t callingPid, int64_t id, int64_t nowMs);
    void noteLateOutput(pid_t callingPid, int64_t id, int64_t delayMs);

    /** The video clients, the one with the latest sign of life first. */
    std::vector<ClientEntry> videoClients() const;
    /** Null when there is none; valid until the next change. */
    const ClientEntry* oldestAudioClient() const;
    std::vector<ClientEntry> all() const;

  private:
    struct Record {
        ClientEntry entry;
        /** Grows from event to event of all clients. */
        uint64_t signOfLife = 0;
    };

    Record* findRecord(pid_t callingPid, int64_t id);

    std::vector<Record> mRecords;
    int32_t mLastHandle = 0;
    uint64_t mLastSignOfLife = 0;
};

}  // namespace android::codecloggerd
