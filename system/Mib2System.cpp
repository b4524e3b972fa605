// The values of the system group and the sysOR rows, under one lock.
#include <vkmibh/system.h>

#include <climits>
#include <new>
#include <utility>

#ifndef VKMIBH_ENTERPRISE
#define VKMIBH_ENTERPRISE 32473
#endif

namespace VLK {

namespace {

// Layers 1, 2, 3, 4 and 7 of RFC 3418's sysServices.
constexpr int kKnownServices = 0x4F;
constexpr int kDefaultServices = 7;

} // namespace

INVCallback::~INVCallback() = default;

INonVolatile::~INonVolatile() = default;

const unsigned BMib2System::s_oidVelkoran[s_lenOidVelkoran] = {1, 3, 6, 1, 4, 1, VKMIBH_ENTERPRISE};

BMib2System::BMib2System()
    : m_store(nullptr), m_time(nullptr), m_description("Velkoran agent"),
      m_objectId(s_lenOidVelkoran, s_oidVelkoran), m_contact("Mr. Qwin"), m_name("MIB handler"),
      m_location("Keswold"), m_services(kDefaultServices), m_orLastChange(0), m_lock(true)
{
}

BMib2System::~BMib2System()
{
    for (unsigned i = 0; i < m_orRows.Count(); ++i)
        delete static_cast<SysOREntry*>(m_orRows.DataAt(static_cast<int>(i)));
}

void BMib2System::SetStore(INonVolatile* store)
{
    const TMutexLock lock(m_lock);
    m_store = store;
}

void BMib2System::SetTime(BTime* time)
{
    const TMutexLock lock(m_lock);
    m_time = time;
}

bool BMib2System::SetText(FField field, const BString& text)
{
    const TMutexLock lock(m_lock);
    (this->*field).Assign(text);
    return this->*field == text;
}

bool BMib2System::SetDescription(const BString& text)
{
    return SetText(&BMib2System::m_description, text);
}

bool BMib2System::SetContact(const BString& text) { return SetText(&BMib2System::m_contact, text); }

bool BMib2System::SetName(const BString& text) { return SetText(&BMib2System::m_name, text); }

bool BMib2System::SetLocation(const BString& text)
{
    return SetText(&BMib2System::m_location, text);
}

bool BMib2System::SetObjectID(const BObjectIdentifier& oid)
{
    return SetObjectID(oid.Length(), oid.Arcs());
}

bool BMib2System::SetObjectID(unsigned int count, const unsigned int* arcs)
{
    BObjectIdentifier copy;
    if (!copy.Set(count, arcs))
        return false;
    const TMutexLock lock(m_lock);
    m_objectId = std::move(copy);
    return true;
}

void BMib2System::SetServices(int bits)
{
    const TMutexLock lock(m_lock);
    m_services = bits & kKnownServices;
}

void BMib2System::SetServices(bool physical, bool datalink, bool internet, bool endToEnd,
                              bool application)
{
    const TMutexLock lock(m_lock);
    m_services = (physical ? 1 : 0) + (datalink ? 2 : 0) + (internet ? 4 : 0) + (endToEnd ? 8 : 0) +
                 (application ? 64 : 0);
}

INonVolatile* BMib2System::Store() const
{
    const TMutexLock lock(m_lock);
    return m_store;
}

bool BMib2System::CopyText(FField field, BString& text) const
{
    const TMutexLock lock(m_lock);
    text.Assign(this->*field);
    return text == this->*field;
}

BString BMib2System::Text(FField field) const
{
    const TMutexLock lock(m_lock);
    return this->*field;
}

BString BMib2System::Description() const { return Text(&BMib2System::m_description); }

BString BMib2System::Contact() const { return Text(&BMib2System::m_contact); }

BString BMib2System::Name() const { return Text(&BMib2System::m_name); }

BString BMib2System::Location() const { return Text(&BMib2System::m_location); }

BObjectIdentifier BMib2System::ObjectID() const
{
    const TMutexLock lock(m_lock);
    return m_objectId;
}

bool BMib2System::CopyObjectID(BObjectIdentifier& oid) const
{
    const TMutexLock lock(m_lock);
    return oid.Set(m_objectId);
}

int BMib2System::Services() const
{
    const TMutexLock lock(m_lock);
    return m_services;
}

unsigned BMib2System::ORLastChange() const
{
    const TMutexLock lock(m_lock);
    return m_orLastChange;
}

unsigned BMib2System::GetUpTime() const
{
    const TMutexLock lock(m_lock);
    return m_time ? m_time->SysUptime() : 0;
}

bool BMib2System::InsertORRow(const BObjectIdentifier& id, const BString& descr)
{
    const TMutexLock lock(m_lock);
    const unsigned count = m_orRows.Count();
    const int largest = count ? m_orRows.KeyAt(static_cast<int>(count) - 1) : 0;
    if (largest == INT_MAX)
        return false;
    const int index = count ? largest + 1 : 1;
    SysOREntry* row = new (std::nothrow) SysOREntry(index, id, descr, GetUpTime());
    if (!row)
        return false;
    if (row->id != id || row->descr != descr || !m_orRows.Insert(index, row)) {
        delete row;
        return false;
    }
    m_orLastChange = row->upTime;
    return true;
}

bool BMib2System::InsertORRow(int index, SysOREntry* row)
{
    if (!row)
        return false;
    const TMutexLock lock(m_lock);
    row->index = index;
    if (!m_orRows.Insert(index, row))
        return false;
    m_orLastChange = GetUpTime();
    return true;
}

// Destroys a row that has left the map.
void BMib2System::Remove(SysOREntry* row)
{
    // CONTRACT: sysORLastChange becomes the time when the removed row was
    // added, not the time of its removal; managers compare the two columns.
    m_orLastChange = row->upTime;
    delete row;
}

bool BMib2System::RemoveORRow(int index)
{
    const TMutexLock lock(m_lock);
    SysOREntry* row = static_cast<SysOREntry*>(m_orRows.Remove(index));
    if (!row)
        return false;
    Remove(row);
    return true;
}

bool BMib2System::RemoveORRow(const BObjectIdentifier& id, const BString& descr)
{
    const TMutexLock lock(m_lock);
    for (unsigned i = 0; i < m_orRows.Count(); ++i) {
        const int position = static_cast<int>(i);
        SysOREntry* row = static_cast<SysOREntry*>(m_orRows.DataAt(position));
        if (row->id == id && row->descr == descr) {
            m_orRows.Remove(m_orRows.KeyAt(position));
            Remove(row);
            return true;
        }
    }
    return false;
}

BMib2System::SysOREntry* BMib2System::GetORRow(int index) const
{
    const TMutexLock lock(m_lock);
    const int position = m_orRows.Find(index);
    return position < 0 ? nullptr : static_cast<SysOREntry*>(m_orRows.DataAt(position));
}

BMib2System::SysOREntry* BMib2System::GetFirstORRow() const
{
    const TMutexLock lock(m_lock);
    return m_orRows.Count() ? static_cast<SysOREntry*>(m_orRows.DataAt(0)) : nullptr;
}

BMib2System::SysOREntry* BMib2System::GetNextORRow(int index) const
{
    if (index < 0)
        return nullptr;
    const TMutexLock lock(m_lock);
    const int position = m_orRows.Next(index);
    return position < 0 ? nullptr : static_cast<SysOREntry*>(m_orRows.DataAt(position));
}

int BMib2System::GetNumORRows() const
{
    const TMutexLock lock(m_lock);
    return static_cast<int>(m_orRows.Count());
}

bool BMib2System::CopyORRow(int index, SysOREntry& row) const
{
    const TMutexLock lock(m_lock);
    const SysOREntry* found = GetORRow(index);
    if (!found)
        return false;
    row = *found;
    return row.id == found->id && row.descr == found->descr;
}

bool BMib2System::FirstORIndex(int& first) const
{
    const TMutexLock lock(m_lock);
    const SysOREntry* found = GetFirstORRow();
    if (found)
        first = found->index;
    return found != nullptr;
}

bool BMib2System::NextORIndex(int index, int& next) const
{
    const TMutexLock lock(m_lock);
    const SysOREntry* found = GetNextORRow(index);
    if (found)
        next = found->index;
    return found != nullptr;
}

} // namespace VLK
