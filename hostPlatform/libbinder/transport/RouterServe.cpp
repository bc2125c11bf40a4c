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

// The two-way call that this thread serves, the innermost if several.
thread_local const IncomingCall* gServed = nullptr;

// Makes this thread act for the caller of |call| while it exists.
class CallerScope {
  public:
    explicit CallerScope(const IncomingCall& call)
        : mThread(IPCThreadState::self()),
          mIdentity(mThread->clearCallingIdentity()),
          mFlags(mThread->getLastTransactionBinderFlags()),
          mPolicy(mThread->getStrictModePolicy()),
          mWorkSource(mThread->clearCallingWorkSource()),
          mOuter(gServed) {
        mThread->clearPropagateWorkSource();
        // A device does not tell which process a one-way call comes from.
        const pid_t pid = call.isOneway() ? 0 : call.link->pid;
        mThread->restoreCallingIdentity((static_cast<int64_t>(call.link->uid) << 32) |
                                        static_cast<uint32_t>(pid));
        mThread->setLastTransactionBinderFlags(static_cast<int32_t>(call.flags));
        gServed = call.isOneway() ? nullptr : &call;
    }

    ~CallerScope() {
        gServed = mOuter;
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
    const IncomingCall* const mOuter;
};

}  // namespace

std::vector<CallId> callsServed() {
    if (gServed == nullptr) return {};
    std::vector<CallId> calls = {{gServed->link->peer, gServed->id}};
    for (const CallId& outer : gServed->chain) {
        if (outer.peer != calls[0].peer) calls.push_back(outer);
    }
    return calls;
}

bool Router::hasRoomFor(const IncomingCall& call) {
    if (mSpaceUsed + call.cost > kTransactionSpace) return false;
    return !call.isOneway() || mOnewayUsed + call.cost <= kOnewaySpace;
}

void Router::takeCall(const std::shared_ptr<Link>& link, Message* message) {
    auto call = std::make_shared<IncomingCall>();
    call->link = link;
    call->id = message->id;
    call->code = message->code;
    call->flags = message->flags;
    call->chain = std::move(message->chain);
    call->cost = message->payload.cost();
    call->payload = std::move(message->payload);
    if (link->acquired.count(message->object) != 0) call->target = mExports.find(message->object);
    if (call->target == nullptr) {
        refuse(*call, DEAD_OBJECT);
        return;
    }
    if (!hasRoomFor(*call)) {
        ALOGE("No room for a call of %zu bytes from process %d", call->cost, link->pid);
        refuse(*call, FAILED_TRANSACTION);
        return;
    }
    mSpaceUsed += call->cost;
    if (call->isOneway()) {
        mOnewayUsed += call->cost;
        call->target->oneways.push_back(call);
        if (!call->target->busy) postOneway(call->target);
        call->target->busy = true;
        return;
    }
    for (const CallId& outer : call->chain) {
        if (outer.peer == mSelf && mCalls.nest(outer.id, call)) return;
    }
    postCall(call);
}

void Router::refuse(const IncomingCall& call, status_t status) {
    Message answer(call.isOneway() ? MessageKind::kDone : MessageKind::kReply, call.id);
    answer.status = status;
    send(call.link, std::move(answer));
    if (!call.payload.objects.empty()) send(call.link, Message(MessageKind::kTaken, call.id));
}

void Router::postCall(const std::shared_ptr<IncomingCall>& call) {
    mPool.post([this, call] { serve(call.get()); });
}

void Router::postOneway(const std::shared_ptr<Export>& target) {
    mPool.post([this, target] { serveNextOneway(target); });
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
    mSpaceUsed -= call->cost;
    mOnewayUsed -= call->cost;
    send(call->link, Message(MessageKind::kDone, call->id));
}

status_t Router::dispatch(IncomingCall* call, Parcel* reply) {
    Parcel data;
    const status_t status = receive(&call->payload, call->link, call->id, &data);
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
    if (status == NO_ERROR) status = encodeParcel(reply, this, &message.payload, &pins);
    if (status != NO_ERROR) message.payload = Payload();
    message.status = status;
    {
        Mutex::Autolock lock(mLock);
        mSpaceUsed -= call.cost;
        if (!call.link->dead) pin(call.link, call.id, &pins);
        send(call.link, std::move(message));
    }
    unpin(&pins);
}

}  // namespace android::transport
