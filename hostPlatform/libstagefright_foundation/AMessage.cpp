// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "AMessage"
#include <log/log.h>

#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

namespace {

constexpr size_t kMaxEntries = 64;

}  // namespace

AMessage::AMessage(uint32_t what, const sp<const AHandler>& /*handler*/) : mWhat(what) {}

void AMessage::set(const char* name, Value value) {
    for (Item& item : mItems) {
        if (item.name != name) continue;
        item.value = std::move(value);
        return;
    }
    LOG_ALWAYS_FATAL_IF(mItems.size() >= kMaxEntries, "no place for \"%s\" beside %zu entries",
                        name, mItems.size());
    mItems.push_back({name, std::move(value)});
}

const AMessage::Value* AMessage::find(const char* name) const {
    for (const Item& item : mItems) {
        if (item.name == name) return &item.value;
    }
    return nullptr;
}

template <typename T>
const T* AMessage::findAs(const char* name) const {
    const Value* const value = find(name);
    return value == nullptr ? nullptr : std::get_if<T>(value);
}

template <typename T>
bool AMessage::copyOut(const char* name, T* value) const {
    const T* const found = findAs<T>(name);
    if (found != nullptr) *value = *found;
    return found != nullptr;
}

void AMessage::setInt32(const char* name, int32_t value) {
    set(name, value);
}

void AMessage::setInt64(const char* name, int64_t value) {
    set(name, value);
}

void AMessage::setFloat(const char* name, float value) {
    set(name, value);
}

void AMessage::setString(const char* name, const char* s, ssize_t len) {
    set(name, len < 0 ? AString(s) : AString(s, len));
}

void AMessage::setString(const char* name, const AString& s) {
    set(name, s);
}

void AMessage::setRect(const char* name, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    set(name, Rect{left, top, right, bottom});
}

bool AMessage::findInt32(const char* name, int32_t* value) const {
    return copyOut(name, value);
}

bool AMessage::findInt64(const char* name, int64_t* value) const {
    return copyOut(name, value);
}

bool AMessage::findFloat(const char* name, float* value) const {
    return copyOut(name, value);
}

bool AMessage::findString(const char* name, AString* value) const {
    return copyOut(name, value);
}

bool AMessage::findRect(const char* name, int32_t* left, int32_t* top, int32_t* right,
                        int32_t* bottom) const {
    const Rect* const rect = findAs<Rect>(name);
    if (rect == nullptr) return false;
    *left = rect->left;
    *top = rect->top;
    *right = rect->right;
    *bottom = rect->bottom;
    return true;
}

bool AMessage::findAsInt64(const char* name, int64_t* value) const {
    int32_t narrow = 0;
    if (!findInt32(name, &narrow)) return findInt64(name, value);
    *value = narrow;
    return true;
}

bool AMessage::contains(const char* name) const {
    return find(name) != nullptr;
}

const char* AMessage::getEntryNameAt(size_t index, Type* type) const {
    if (index >= mItems.size()) return nullptr;
    *type = static_cast<Type>(mItems[index].value.index());
    return mItems[index].name.c_str();
}

sp<AMessage> AMessage::dup() const {
    sp<AMessage> copy = new AMessage();
    copy->mWhat = mWhat;
    copy->mItems = mItems;
    return copy;
}

}  // namespace android
