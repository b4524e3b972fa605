// The subscriptions of a timer by their id.
#pragma once

#include <vkmibh/timer.h>

#include "foundation/HashMap.h"

namespace VLK {

// A subscription as the timer keeps it. Its callbacks are handed the base.
struct BTimer::SRecord : Subscription {
    int key = 0;               // its id while the index has it, else 0
    SRecord* sameId = nullptr; // the one after it with the same id
    BLLItem* item = nullptr;   // its place in the list
};

// Ids come again after 2^32 subscriptions, and one for ever may still have its
// own: Find() gives the one that was inserted first, as a search of the list does.
class BTimer::Index {
public:
    // False without memory; nothing is changed then.
    bool Insert(SRecord* record)
    {
        if (SRecord* last = Find(record->id)) {
            while (last->sameId)
                last = last->sameId;
            last->sameId = record;
        } else if (!m_firsts.Insert(record->id, record)) {
            return false;
        }
        record->key = record->id;
        return true;
    }

    SRecord* Find(int id) const
    {
        void** const place = m_firsts.Find(id);
        return place ? static_cast<SRecord*>(*place) : nullptr;
    }

    // Does nothing to a record that is not there.
    void Remove(SRecord* record)
    {
        if (record->key == 0)
            return;
        void** const place = m_firsts.Find(record->key);
        SRecord* before = static_cast<SRecord*>(*place);
        if (before == record && !record->sameId) {
            m_firsts.Remove(record->key);
        } else if (before == record) {
            *place = record->sameId;
        } else {
            while (before->sameId != record)
                before = before->sameId;
            before->sameId = record->sameId;
        }
        record->key = 0;
        record->sameId = nullptr;
    }

private:
    HashMap<int> m_firsts;
};

} // namespace VLK
