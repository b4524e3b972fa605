// Loading and saving of the system group.
#include <vkmibh/system.h>

#include "foundation/HostCall.h"

#include <cstring>

namespace VLK {

namespace {

constexpr char kSection[] = "mib-2.system";
constexpr char kDescr[] = "sysDescr";
constexpr char kObjectId[] = "sysObjectID";
constexpr char kLocation[] = "sysLocation";
constexpr char kContact[] = "sysContact";
constexpr char kName[] = "sysName";
constexpr char kServices[] = "sysServices";

// A store that throws lacks the key.
bool Load(INonVolatile& store, const char* key, BString& text)
{
    return HostCall([&] { return store.GetString(kSection, key, text, 0) == 0; }, false);
}

bool Load(INonVolatile& store, const char* key, int& number)
{
    return HostCall([&] { return store.GetInt(kSection, key, number, 0) == 0; }, false);
}

// Whether that is what the text says. A text that is no identifier says the empty
// one; digits and dots read so only when there was no memory.
bool IsRead(const BObjectIdentifier& oid, const BString& text)
{
    return oid.Length() != 0 || text.empty() ||
           std::strspn(text.c_str(), "0123456789.") != text.length();
}

} // namespace

int BMib2System::InitFromNV()
{
    VKDbgModuleTraceClass(eTraceSystemGroup, "InitFromNV");
    INonVolatile* store = Store();
    if (!store)
        return 0;
    BString text;
    if (Load(*store, kDescr, text))
        SetDescription(text);
    if (Load(*store, kObjectId, text)) {
        const BObjectIdentifier oid(text);
        if (IsRead(oid, text))
            SetObjectID(oid);
    }
    if (Load(*store, kLocation, text))
        SetLocation(text);
    if (Load(*store, kContact, text))
        SetContact(text);
    if (Load(*store, kName, text))
        SetName(text);
    int services = 0;
    if (Load(*store, kServices, services))
        SetServices(services);
    return 0;
}

int BMib2System::SaveToNV()
{
    VKDbgModuleTraceClass(eTraceSystemGroup, "SaveToNV");
    m_lock.Wait(kWaitForever);
    INonVolatile* const store = m_store;
    const BString descr(m_description);
    const BString objectId(m_objectId.ToString());
    const BString location(m_location);
    const BString contact(m_contact);
    const BString name(m_name);
    const int services = m_services;
    // Without memory for a copy the records of the last save are kept.
    const bool whole = descr == m_description && location == m_location && contact == m_contact &&
                       name == m_name && BObjectIdentifier(objectId) == m_objectId;
    m_lock.Done();
    if (!store || !whole)
        return 0;
    // Outside the lock: the store may take its time and locks of its own.
    store->OpenSection(kSection);
    store->SetString(kSection, kDescr, descr, 0, 0);
    store->SetString(kSection, kObjectId, objectId, 0, 0);
    store->SetString(kSection, kLocation, location, 0, 0);
    store->SetString(kSection, kContact, contact, 0, 0);
    store->SetString(kSection, kName, name, 0, 0);
    store->SetInt(kSection, kServices, services, nullptr, 0, 0);
    return 0;
}

} // namespace VLK
