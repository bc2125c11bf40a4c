// SPDX-License-Identifier: Apache-2.0
#include "Message.h"

#include <string.h>

#include <algorithm>

#include "../FlatObject.h"

namespace android::transport {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "Numbers travel as they lie in memory");

namespace {

constexpr size_t kHeaderSize = 16;
constexpr size_t kObjectSize = 4 + 4 + 8 + 8;
constexpr size_t kMaxChain = 1024;

/** Which fields the body of a kind has, in the order of Message. */
struct Layout {
    bool version;  // and peer
    bool object;
    bool status;
    bool call;  // code, flags, chain
    bool payload;
};

// Indexed by kind - 1.
constexpr Layout kLayouts[] = {
        {true, false, false, false, false},   // kHello
        {true, false, false, false, false},   // kWelcome
        {false, true, false, false, false},   // kAcquire
        {false, false, true, false, false},   // kAcquired
        {false, true, false, false, false},   // kRelease
        {false, true, false, true, true},     // kCall
        {false, false, true, false, true},    // kReply
        {false, false, false, false, false},  // kTaken
        {false, false, false, false, false},  // kDone
};
constexpr uint32_t kKinds = sizeof(kLayouts) / sizeof(kLayouts[0]);

class Writer {
  public:
    template <typename T>
    void number(T value) {
        bytes(&value, sizeof(value));
    }

    void bytes(const void* data, size_t size) {
        const auto* const first = static_cast<const uint8_t*>(data);
        mBytes.insert(mBytes.end(), first, first + size);
    }

    void peer(const PeerId& peer) {
        number(peer.pid);
        number(peer.nonce);
    }

    void chain(const std::vector<CallId>& calls) {
        number(static_cast<uint32_t>(calls.size()));
        for (const CallId& call : calls) {
            peer(call.peer);
            number(call.id);
        }
    }

    void payload(const Payload& payload) {
        number(static_cast<uint32_t>(payload.data.size()));
        number(static_cast<uint32_t>(payload.objects.size()));
        bytes(payload.data.data(), payload.data.size());
        for (const Payload::Object& object : payload.objects) {
            number(object.offset);
            peer(object.address.peer);
            number(object.address.object);
        }
    }

    std::vector<uint8_t> take() {
        const auto bodySize = static_cast<uint32_t>(mBytes.size() - kHeaderSize);
        memcpy(mBytes.data(), &bodySize, sizeof(bodySize));
        return std::move(mBytes);
    }

  private:
    std::vector<uint8_t> mBytes;
};

/** Reads numbers until one does not fit; then everything is 0 and ok() false. */
class Reader {
  public:
    Reader(const uint8_t* bytes, size_t size) : mBytes(bytes), mLeft(size) {}

    bool ok() const { return mOk; }
    bool atEnd() const { return mOk && mLeft == 0; }

    template <typename T>
    T number() {
        T value = 0;
        if (const uint8_t* const at = bytes(sizeof(value)); at != nullptr) {
            memcpy(&value, at, sizeof(value));
        }
        return value;
    }

    PeerId peer() {
        PeerId peer;
        peer.pid = number<uint32_t>();
        peer.nonce = number<uint64_t>();
        return peer;
    }

    void chain(std::vector<CallId>* calls) {
        const size_t count = number<uint32_t>();
        if (count > kMaxChain) mOk = false;
        for (size_t i = 0; mOk && i < count; i++) {
            const PeerId caller = peer();
            calls->push_back({caller, number<uint64_t>()});
        }
    }

    void payload(Payload* payload) {
        const size_t size = number<uint32_t>();
        const size_t count = number<uint32_t>();
        if (size > kTransactionSpace || count > size / sizeof(flat_binder_object)) mOk = false;
        const uint8_t* const data = bytes(size);
        if (data == nullptr || mLeft != count * kObjectSize) {
            mOk = false;
            return;
        }
        payload->data.assign(data, data + size);
        payload->objects.resize(count);
        size_t free = 0;
        for (Payload::Object& object : payload->objects) {
            object.offset = number<uint32_t>();
            object.address.peer = peer();
            object.address.object = number<uint64_t>();
            const size_t end = size_t{object.offset} + sizeof(flat_binder_object);
            if (object.offset < free || object.offset % 4 != 0 || end > size) mOk = false;
            free = end;
        }
    }

  private:
    const uint8_t* bytes(size_t size) {
        if (size > mLeft) mOk = false;
        if (!mOk) return nullptr;
        const uint8_t* const at = mBytes;
        mBytes += size;
        mLeft -= size;
        return at;
    }

    const uint8_t* mBytes;
    size_t mLeft;
    bool mOk = true;
};

}  // namespace

bool Payload::isFd(const Object& object) const {
    uint32_t type;
    memcpy(&type, data.data() + object.offset, sizeof(type));
    return type == kTypeFd;
}

size_t Payload::fdCount() const {
    return static_cast<size_t>(std::count_if(objects.begin(), objects.end(),
                                             [this](const Object& o) { return isFd(o); }));
}

size_t Payload::cost() const {
    const size_t whole = (data.size() + 7) & ~size_t{7};
    return std::max<size_t>(whole + objects.size() * sizeof(uint64_t), sizeof(uint64_t));
}

std::vector<uint8_t> encodeMessage(const Message& message) {
    const Layout& layout = kLayouts[static_cast<uint32_t>(message.kind) - 1];
    Writer writer;
    writer.number(uint32_t{0});  // the size of the body, once it is known
    writer.number(static_cast<uint32_t>(message.kind));
    writer.number(message.id);
    if (layout.version) {
        writer.number(message.version);
        writer.peer(message.peer);
    }
    if (layout.object) writer.number(message.object);
    if (layout.status) writer.number(message.status);
    if (layout.call) {
        writer.number(message.code);
        writer.number(message.flags);
        writer.chain(message.chain);
    }
    if (layout.payload) writer.payload(message.payload);
    return writer.take();
}

Decoded decodeMessage(const uint8_t* bytes, size_t size, Message* message, size_t* used) {
    if (size < kHeaderSize) return Decoded::kIncomplete;
    Reader header(bytes, kHeaderSize);
    const size_t bodySize = header.number<uint32_t>();
    const auto kind = header.number<uint32_t>();
    if (bodySize > kMaxMessageSize - kHeaderSize || kind < 1 || kind > kKinds) {
        return Decoded::kInvalid;
    }
    if (size - kHeaderSize < bodySize) return Decoded::kIncomplete;

    const Layout& layout = kLayouts[kind - 1];
    Reader body(bytes + kHeaderSize, bodySize);
    *message = Message();
    message->kind = static_cast<MessageKind>(kind);
    message->id = header.number<uint64_t>();
    if (layout.version) {
        message->version = body.number<uint32_t>();
        message->peer = body.peer();
    }
    if (layout.object) message->object = body.number<uint64_t>();
    if (layout.status) message->status = body.number<int32_t>();
    if (layout.call) {
        message->code = body.number<uint32_t>();
        message->flags = body.number<uint32_t>();
        body.chain(&message->chain);
    }
    if (layout.payload) body.payload(&message->payload);
    if (!body.atEnd()) return Decoded::kInvalid;
    *used = kHeaderSize + bodySize;
    return Decoded::kMessage;
}

}  // namespace android::transport
