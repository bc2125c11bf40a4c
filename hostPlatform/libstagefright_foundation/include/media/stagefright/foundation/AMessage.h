// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <utils/RefBase.h>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AString.h>

namespace android {

struct AHandler;

/**
 * Named values of mixed type, up to 64 of them, in the order in which they were first set. Not
 * thread-safe. The names must be non-null.
 */
struct AMessage : public RefBase {
    enum Type {
        kTypeInt32,
        kTypeInt64,
        kTypeFloat,
        kTypeString,
        kTypeRect,
    };

    AMessage() = default;
    AMessage(uint32_t what, const sp<const AHandler>& handler);

    void setWhat(uint32_t what) { mWhat = what; }
    uint32_t what() const { return mWhat; }

    /** A name that is set already takes the new value and type in its old place. */
    void setInt32(const char* name, int32_t value);
    void setInt64(const char* name, int64_t value);
    void setFloat(const char* name, float value);
    /** len is the length of s; -1 takes it up to its NUL. */
    void setString(const char* name, const char* s, ssize_t len = -1);
    void setString(const char* name, const AString& s);
    void setRect(const char* name, int32_t left, int32_t top, int32_t right, int32_t bottom);

    /** A find is true only for the very type that was set; otherwise the result is untouched. */
    bool findInt32(const char* name, int32_t* value) const;
    bool findInt64(const char* name, int64_t* value) const;
    bool findFloat(const char* name, float* value) const;
    bool findString(const char* name, AString* value) const;
    bool findRect(const char* name, int32_t* left, int32_t* top, int32_t* right,
                  int32_t* bottom) const;
    /** Either integer type, widened. */
    bool findAsInt64(const char* name, int64_t* value) const;

    /** Whether the name is set, with whatever type. */
    bool contains(const char* name) const;
    size_t countEntries() const { return mItems.size(); }
    /** The name stays valid until the next change. Null behind the last entry. */
    const char* getEntryNameAt(size_t index, Type* type) const;

    void clear() { mItems.clear(); }
    sp<AMessage> dup() const;

  protected:
    virtual ~AMessage() = default;

  private:
    struct Rect {
        int32_t left, top, right, bottom;
    };
    // The order is that of Type.
    using Value = std::variant<int32_t, int64_t, float, AString, Rect>;
    struct Item {
        std::string name;
        Value value;
    };

    void set(const char* name, Value value);
    const Value* find(const char* name) const;
    template <typename T>
    const T* findAs(const char* name) const;
    template <typename T>
    bool copyOut(const char* name, T* value) const;

    uint32_t mWhat = 0;
    std::vector<Item> mItems;

    DISALLOW_EVIL_CONSTRUCTORS(AMessage);
};

}  // namespace android
