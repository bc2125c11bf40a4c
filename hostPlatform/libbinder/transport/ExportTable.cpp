// SPDX-License-Identifier: Apache-2.0
#include "ExportTable.h"

namespace android::transport {

uint64_t ExportTable::hold(const sp<BBinder>& object) {
    const auto [at, isNew] = mIds.try_emplace(object.get(), mNextId);
    if (isNew) mById[mNextId++] = std::make_shared<Export>(at->second, object);
    mById[at->second]->uses++;
    return at->second;
}

bool ExportTable::hold(uint64_t id) {
    const std::shared_ptr<Export> entry = find(id);
    if (entry == nullptr) return false;
    entry->uses++;
    return true;
}

void ExportTable::letGo(uint64_t id, uint32_t count, Trash* trash) {
    const std::shared_ptr<Export> entry = find(id);
    if (entry == nullptr) return;
    entry->uses -= count;
    sweep(entry, trash);
}

std::shared_ptr<Export> ExportTable::find(uint64_t id) const {
    const auto at = mById.find(id);
    return at != mById.end() ? at->second : nullptr;
}

void ExportTable::sweep(const std::shared_ptr<Export>& entry, Trash* trash) {
    if (entry->uses > 0 || entry->busy) return;
    trash->push_back(entry->object);
    mIds.erase(entry->object.get());
    mById.erase(entry->id);
}

}  // namespace android::transport
