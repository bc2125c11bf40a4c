// SPDX-License-Identifier: Apache-2.0
// Calls from other processes.
#define LOG_TAG "Binder"

#include <limits>
#include <memory>

#include <binder/IPCThreadState.h>
#include <log/log.h>

#include "Router.h"

namespace android::transport {

namespace {

// Of two-way calls that one peer may have waiting here. Each blocks a thread of the peer's.
constexpr size_t kMaxTwoWayCost = 16 * 1024 * 1024;
// Of replies that one peer may leave untaken; one for each of its threads would do.
constexpr size_t kMaxUntakenReplies = 4096;

struct ServedCall {
    PeerId peer;
    uint64_t id;
};

// Innermost last.
thread_local std::vector<ServedCall> gServedCalls;

// Makes this thread act for the caller of |call| while it exists.
class CallerScope {
  public:
    explicit CallerScope(const IncomingCall& call)
        : mThread(IPCThreadState::self()),
          mIdentity(mThread->clearCallingIdentity()),
          mFlags(mThread->getLastTransactionBinderFlags()),
          mPolicy(mThread->getStrictModePolicy()),
          mWorkSource(mThread->clearCallingWorkSource()),
          mTwoWay(!call.isOneway()) {
        mThread->clearPropagateWorkSource();
        mThread->restoreCallingIdentity((static_cast<int64_t>(call.link->uid) << 32) |
                                        static_cast<uint32_t>(call.link->pid));
        mThread->setLastTransactionBinderFlags(static_cast<int32_t>(call.flags));
        if (mTwoWay) gServedCalls.push_back({call.link->peer, call.id});
    }

    ~CallerScope() {
        if (mTwoWay) gServedCalls.pop_back();
        mThread->restoreCallingWorkSource(mWorkSource);
        mThread->setStrictModePolicy(mPolicy);
        mThread->setLastTransactionBinderFlags(mFlags);
        mThread->restoreCallingIdentity(mIdentity);
    }

  private:
    IPCThreadState* const mThread;
    const int64_t mIdentity;
    const int32_t mFlags;
    const int32_t mPolicy;
    const int64_t mWorkSource;
    const bool mTwoWay;
};

}  // namespace

uint64_t servedCallOf(const PeerId& peer) {
    for (auto at = gServedCalls.rbegin(); at != gServedCalls.rend(); ++at) {
        if (at->peer == peer) return at->id;
    }
    return 0;
}

// False if the peer has sent more one-way calls than it may have under way.
bool Router::takeCall(const std::shared_ptr<Link>& link, Message* message) {
    auto call = std::make_shared<IncomingCall>();
    call->link = link;
    call->id = message->id;
    call->code = message->code;
    call->flags = message->flags;
    call->cost = costOf(message->payload);
    call->payload = std::move(message->payload);
    if (link->acquired.count(message->object) != 0) call->target = mExports.find(message->object);
    if (call->target == nullptr) {
        refuse(*call, DEAD_OBJECT);
        return true;
    }

    if (call->isOneway()) {
        link->onewayCost += call->cost;
        call->target->oneways.push_back(call);
        if (!call->target->busy) postOneway(call->target);
        call->target->busy = true;
        return link->onewayCost <= kMaxOnewaySize;
    }
    if (link->twoWayCost + call->cost > kMaxTwoWayCost) {
        refuse(*call, FAILED_TRANSACTION);
        return true;
    }
    link->twoWayCost += call->cost;
    const auto outer = mPending.find(message->nestedIn);
    if (outer != mPending.end() && outer->second->link->peer == link->peer &&
        !outer->second->done) {
        outer->second->nested.push_back(std::move(call));
        outer->second->changed.signal();
    } else {
        postCall(call);
    }
    return true;
}

void Router::refuse(const IncomingCall& call, status_t status) {
    Message answer(call.isOneway() ? MessageKind::kDone : MessageKind::kReply, call.id);
    answer.status = status;
    send(call.link, answer);
}

void Router::postCall(const std::shared_ptr<IncomingCall>& call) {
    mPool.postCall([this, call] { serve(call.get()); });
}

void Router::postOneway(const std::shared_ptr<Export>& target) {
    mPool.postCall([this, target] { serveNextOneway(target); });
}

void Router::serveNextOneway(const std::shared_ptr<Export>& target) {
    std::shared_ptr<IncomingCall> call;
    {
        Mutex::Autolock lock(mLock);
        call = std::move(target->oneways.front());
        target->oneways.pop_front();
    }
    serve(call.get());

    Trash trash;
    Mutex::Autolock lock(mLock);
    if (!target->oneways.empty()) {
        postOneway(target);
        return;
    }
    target->busy = false;
    mExports.sweep(target, &trash);
}

void Router::serve(IncomingCall* call) {
    Parcel reply;
    const status_t status = dispatch(call, &reply);
    if (!call->isOneway()) {
        sendReply(*call, status, reply);
        return;
    }
    Mutex::Autolock lock(mLock);
    call->link->onewayCost -= call->cost;
    send(call->link, Message(MessageKind::kDone, call->id));
}

status_t Router::dispatch(IncomingCall* call, Parcel* reply) {
    Parcel data;
    const status_t status = decodeParcel(call->payload, &data);
    call->payload = Payload();
    if (status != NO_ERROR) return status;
    const CallerScope scope(*call);
    return call->target->object->transact(call->code, data, reply, call->flags);
}

// As on a device, what was written to the reply of a failed call does not reach the caller, and a
// positive result is none.
void Router::sendReply(const IncomingCall& call, status_t status, const Parcel& reply) {
    Message message(MessageKind::kReply, call.id);
    Pins pins;
    if (status >= NO_ERROR) status = reply.errorCheck();
    if (status == NO_ERROR) status = encodeParcel(reply, &message.payload, &pins);
    if (status != NO_ERROR) message.payload = Payload();
    message.status = status;
    {
        Mutex::Autolock lock(mLock);
        call.link->twoWayCost -= call.cost;
        if (!message.payload.objects.empty() && !call.link->dead) {
            auto& untaken = call.link->inTransit;
            const auto [at, isNew] = untaken.try_emplace(call.id);
            if (isNew) std::swap(at->second.pins, pins);
            if (!isNew || untaken.size() > kMaxUntakenReplies) call.link->channel.cutOff();
        }
        send(call.link, message);
    }
    unpin(&pins);
}

}  // namespace android::transport
