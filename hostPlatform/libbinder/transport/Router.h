// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Condition.h>
#include <utils/Mutex.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CallTable.h"
#include "ExportTable.h"
#include "HandleTable.h"
#include "ParcelCodec.h"
#include "Reader.h"
#include "RuntimeDir.h"
#include "WorkerPool.h"

namespace android::transport {

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
class Router : private ObjectSpace, private Reader::Source {
  public:
    /** Never destroyed. */
    static Router& instance();

    /** As IBinder::transact() of the proxy |handle|; a failed call leaves |reply| empty. */
    status_t call(int32_t handle, uint32_t code, uint32_t flags, const Parcel& data, Parcel* reply);

    /** The living proxy, or null. */
    sp<IBinder> proxyOf(int32_t handle);

    /** The proxy of |handle| has gone. */
    void forget(int32_t handle);

    /** Sees to it that the proxy of |handle| sends its obituary if its object has died already. */
    void watch(int32_t handle);

    /** Makes |object| known to all processes as |name|, in place of what had that name before. */
    status_t publish(const std::string& name, const sp<IBinder>& object);

    /** The object of that name, null if there is none or its process has gone. */
    sp<IBinder> find(const std::string& name);

    /** All names, those of dead processes included. */
    std::vector<std::string> names() const { return mDir.names(); }

    /** True if other processes can be reached. */
    bool reachesOthers() const { return mDir.isEnabled(); }

    WorkerPool& pool() { return mPool; }

    /** Closes all links; every call fails from now on. */
    void stop();

  private:
    Router();

    // Router.cpp: calls to others.
    bool ensureListening();
    std::shared_ptr<Link> linkTo(const PeerId& peer);
    void pin(const std::shared_ptr<Link>& link, uint64_t id, Pins* pins) REQUIRES(mLock);
    void unpin(Pins* pins);
    status_t sendOneway(const std::shared_ptr<Link>& link, Message* message, Pins* pins);
    status_t sendAndAwait(Message* message, Pins* pins, CallTable::Call* call);
    void await(uint64_t id, CallTable::Call* call) REQUIRES(mLock);

    // RouterObjects.cpp: objects and what keeps them.
    bool addressOf(const sp<IBinder>& object, ObjectAddress* address, Pins* pins) override;
    sp<IBinder> resolve(const ObjectAddress& address,
                        const std::shared_ptr<Receipt>& receipt) override;
    void acquired(const std::shared_ptr<Link>& link, const Message& answer) REQUIRES(mLock);
    void confirm(const std::vector<std::shared_ptr<Receipt>>& receipts) REQUIRES(mLock);
    status_t receive(Payload* payload, const std::shared_ptr<Link>& link, uint64_t id,
                     Parcel* parcel);
    void postObituary(sp<BpBinder> proxy);
    void letGo(Pins* pins, Trash* trash) REQUIRES(mLock);
    void discard(Trash* trash);

    // RouterServe.cpp: calls from others.
    void takeCall(const std::shared_ptr<Link>& link, Message* message) REQUIRES(mLock);
    bool hasRoomFor(const IncomingCall& call) REQUIRES(mLock);
    void refuse(const IncomingCall& call, status_t status) REQUIRES(mLock);
    void serve(IncomingCall* call);
    status_t dispatch(IncomingCall* call, Parcel* reply);
    void sendReply(const IncomingCall& call, status_t status, const Parcel& reply);
    void serveNextOneway(const std::shared_ptr<Export>& target);
    void postOneway(const std::shared_ptr<Export>& target);
    void postCall(const std::shared_ptr<IncomingCall>& call);

    // RouterLinks.cpp: connections and what comes on them.
    void ensureReader() REQUIRES(mLock);
    bool prepare(std::vector<pollfd>* fds, int* timeoutMs) override;
    void handle(const std::vector<pollfd>& fds) override;
    void acceptLinks(Trash* trash) REQUIRES(mLock);
    bool readLink(const std::shared_ptr<Link>& link, Trash* trash) REQUIRES(mLock);
    bool takeMessage(const std::shared_ptr<Link>& link, Message* message, Trash* trash)
            REQUIRES(mLock);
    bool takeFromClient(const std::shared_ptr<Link>& link, Message* message, Trash* trash)
            REQUIRES(mLock);
    bool takeFromServer(const std::shared_ptr<Link>& link, Message* message, Trash* trash)
            REQUIRES(mLock);
    bool takeReply(const std::shared_ptr<Link>& link, Message* message) REQUIRES(mLock);
    void taken(const std::shared_ptr<Link>& link, uint64_t id, Trash* trash) REQUIRES(mLock);
    void greet(const std::shared_ptr<Link>& link, MessageKind kind) REQUIRES(mLock);
    void send(const std::shared_ptr<Link>& link, Message message) REQUIRES(mLock);
    void drop(const std::shared_ptr<Link>& link, Trash* trash) REQUIRES(mLock);

    const RuntimeDir mDir;
    const PeerId mSelf;
    WorkerPool mPool;
    Reader mReader;
    std::vector<std::shared_ptr<Link>> mPolled;  // the reader's own
    Mutex mListenLock;                           // taken before mLock

    Mutex mLock;
    Condition mLinksChanged;
    bool mStopping GUARDED_BY(mLock) = false;
    bool mReading GUARDED_BY(mLock) = false;
    base::unique_fd mListener GUARDED_BY(mLock);
    /** No descriptor is free to accept another link with. */
    bool mAcceptPaused GUARDED_BY(mLock) = false;
    std::vector<std::shared_ptr<Link>> mLinks GUARDED_BY(mLock);
    std::map<PeerId, std::shared_ptr<Link>> mServers GUARDED_BY(mLock);  // the outgoing links
    ExportTable mExports GUARDED_BY(mLock);
    HandleTable mHandles GUARDED_BY(mLock);
    CallTable mCalls GUARDED_BY(mLock);
    std::map<std::string, Pins> mPublished GUARDED_BY(mLock);
    /** What is taken of kTransactionSpace, and the part of one-way calls. */
    size_t mSpaceUsed GUARDED_BY(mLock) = 0;
    size_t mOnewayUsed GUARDED_BY(mLock) = 0;
    uint64_t mNextId GUARDED_BY(mLock) = 1;
};

/** The calls that wait for what this thread serves, the innermost of each process. */
std::vector<CallId> callsServed();

}  // namespace android::transport
