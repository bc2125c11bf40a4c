// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ExportTable.h"
#include "HandleTable.h"
#include "Link.h"
#include "RuntimeDir.h"
#include "WorkerPool.h"

#include <binder/Parcel.h>
#include <poll.h>
#include <utils/Condition.h>
#include <utils/Mutex.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace android::transport {

/** The bytes and the object table of a Parcel, which only IPCThreadState may see. */
struct ParcelView {
    const uint8_t* data;
    size_t size;
    const binder_size_t* objects;
    size_t objectCount;
};
using ParcelViewer = ParcelView (*)(const Parcel&);

/**
 * Carries calls between this process and others (Message.h has the protocol).
 *
 * One thread reads all links; it runs no foreign code and never waits for anything but them.
 * Callers send on their own threads and sleep until the reader has their reply. Calls from others
 * are served by the pool, or by the very thread whose call they are nested in. The threads exist
 * from the first moment that another process is met, and end with the process: at exit the links
 * are closed and what runs is given a second to finish.
 *
 * One lock guards all state. It is never held over foreign code, destructors of objects included,
 * nor over anything that blocks. Thread-safe.
 */
class Router {
  public:
    /** Never destroyed. */
    static Router& instance();

    /** Called once, before anything else. */
    static bool setParcelViewer(ParcelViewer viewer);

    /** As IBinder::transact() of the proxy |handle|; a failed call leaves |reply| empty. */
    status_t call(int32_t handle, uint32_t code, uint32_t flags, const Parcel& data, Parcel* reply);

    /** The living proxy, or null. */
    sp<IBinder> proxyOf(int32_t handle);

    /** The proxy of |handle| has gone. */
    void forget(int32_t handle);

    /** Makes |object| known to all processes as |name|, in place of what had that name before. */
    status_t publish(const std::string& name, const sp<IBinder>& object);

    /** The living object of that name, or null. */
    sp<IBinder> find(const std::string& name);

    /** All names, those of dead processes included. */
    std::vector<std::string> names() const { return mDir.names(); }

    /** True if other processes can be reached. */
    bool reachesOthers() const { return mDir.isEnabled(); }

    WorkerPool& pool() { return mPool; }

    /** Closes all links; every call fails from now on. */
    void stop();

  private:
    /** A call or an acquisition that a thread of ours waits for. */
    struct PendingCall {
        explicit PendingCall(const std::shared_ptr<Link>& l) : link(l) {}

        const std::shared_ptr<Link> link;
        bool done = false;
        status_t status = NO_ERROR;
        Payload reply;
        std::deque<std::shared_ptr<IncomingCall>> nested;
        Condition changed;
    };

    Router();

    // Router.cpp: objects and calls to others.
    bool ensureListening();
    std::shared_ptr<Link> linkTo(const PeerId& peer);
    status_t acquire(const std::shared_ptr<Link>& link, uint64_t object);
    void release(const std::shared_ptr<Link>& link, uint64_t object) REQUIRES(mLock);
    bool resolve(const ObjectAddress& address, sp<IBinder>* object);
    status_t encodeParcel(const Parcel& parcel, Payload* payload, Pins* pins);
    bool addressOf(const sp<IBinder>& object, ObjectAddress* address, Pins* pins);
    status_t decodeParcel(const Payload& payload, Parcel* parcel);
    void unpin(Pins* pins);
    status_t sendOneway(const std::shared_ptr<Link>& link, Message* message, Pins* pins);
    void await(uint64_t id, PendingCall* call) REQUIRES(mLock);

    // RouterServe.cpp: calls from others.
    bool takeCall(const std::shared_ptr<Link>& link, Message* message) REQUIRES(mLock);
    void refuse(const IncomingCall& call, status_t status) REQUIRES(mLock);
    void serve(IncomingCall* call);
    status_t dispatch(IncomingCall* call, Parcel* reply);
    void sendReply(const IncomingCall& call, status_t status, const Parcel& reply);
    void serveNextOneway(const std::shared_ptr<Export>& target);
    void postOneway(const std::shared_ptr<Export>& target);
    void postCall(const std::shared_ptr<IncomingCall>& call);

    // RouterIo.cpp: the reader.
    void ensureReader() REQUIRES(mLock);
    void wakeReader();
    void read();
    void readTurn(const std::vector<pollfd>& fds, const std::vector<std::shared_ptr<Link>>& links);
    void acceptLinks(Trash* trash) REQUIRES(mLock);
    bool readLink(const std::shared_ptr<Link>& link, Trash* trash) REQUIRES(mLock);
    bool takeMessage(const std::shared_ptr<Link>& link, Message* message, Trash* trash)
            REQUIRES(mLock);
    bool takeFromClient(const std::shared_ptr<Link>& link, Message* message, Trash* trash)
            REQUIRES(mLock);
    bool takeFromServer(const std::shared_ptr<Link>& link, Message* message, Trash* trash)
            REQUIRES(mLock);
    bool settle(const std::shared_ptr<Link>& link, Message* message) REQUIRES(mLock);
    void greet(const std::shared_ptr<Link>& link, MessageKind kind) REQUIRES(mLock);
    void send(const std::shared_ptr<Link>& link, const Message& message) REQUIRES(mLock);
    void drop(const std::shared_ptr<Link>& link, Trash* trash) REQUIRES(mLock);
    void failCalls(const std::shared_ptr<Link>& link) REQUIRES(mLock);
    void endTransit(const std::shared_ptr<Link>& link, uint64_t id, Trash* trash) REQUIRES(mLock);
    void letGo(Pins* pins, Trash* trash) REQUIRES(mLock);
    void discard(Trash* trash);

    const RuntimeDir mDir;
    const PeerId mSelf;
    const base::unique_fd mWake;  // an eventfd
    WorkerPool mPool;
    Mutex mListenLock;  // taken before mLock

    Mutex mLock;
    Condition mLinksChanged;
    bool mStopping GUARDED_BY(mLock) = false;
    bool mReading GUARDED_BY(mLock) = false;
    base::unique_fd mListener GUARDED_BY(mLock);
    int64_t mAcceptAgainMs GUARDED_BY(mLock) = 0;
    std::vector<std::shared_ptr<Link>> mLinks GUARDED_BY(mLock);
    std::map<PeerId, std::shared_ptr<Link>> mServers GUARDED_BY(mLock);  // the outgoing links
    ExportTable mExports GUARDED_BY(mLock);
    HandleTable mHandles GUARDED_BY(mLock);
    std::map<std::string, Pins> mPublished GUARDED_BY(mLock);
    std::map<uint64_t, PendingCall*> mPending GUARDED_BY(mLock);
    uint64_t mNextId GUARDED_BY(mLock) = 1;
};

/** What a call of |payload| counts against the limits of its link. */
size_t costOf(const Payload& payload);

/** The two-way call of |peer| that this thread serves innermost, 0 if none. */
uint64_t servedCallOf(const PeerId& peer);

}  // namespace android::transport
