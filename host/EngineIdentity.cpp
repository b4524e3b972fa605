#include "host/EngineIdentity.h"

#include "host/HostError.h"

#include <cerrno>
#include <sys/random.h>

namespace VLK::host {

namespace {

constexpr const char* kKey = "engine";
enum EField { eFieldId = 1, eFieldBoots = 2 };

constexpr size_t kShortestId = 5; // RFC 3411 section 5
constexpr size_t kLongestId = 32;
constexpr size_t kRandomOctets = 12;
constexpr unsigned char kFormatOctets = 5;

std::string RandomOctets(size_t count)
{
    std::string octets(count, '\0');
    for (size_t have = 0; have < count;) {
        ssize_t more = getrandom(&octets[have], count - have, 0);
        if (more < 0 && errno != EINTR)
            throw BHostError(eExitStore, "no random octets for an engine ID");
        have += more > 0 ? static_cast<size_t>(more) : 0;
    }
    return octets;
}

// The enterprise's number with the highest bit set, a format, and octets.
std::string MakeId()
{
    const unsigned enterprise =
        0x80000000u | BMib2System::s_oidVelkoran[BMib2System::s_lenOidVelkoran - 1];
    std::string id;
    for (int shift = 24; shift >= 0; shift -= 8)
        id += static_cast<char>(enterprise >> shift);
    id += static_cast<char>(kFormatOctets);
    return id + RandomOctets(kRandomOctets);
}

bool IsEngineId(const BOctetString& id)
{
    return id.Length() >= kShortestId && id.Length() <= kLongestId && (id.Data()[0] & 0x80);
}

// As it was kept last; boots 0 when nothing was, or nothing that can be used.
SEngineIdentity Kept(BStore& store)
{
    BOctetString id;
    SEngineIdentity kept;
    kept.boots = 0;
    if (store.GetOctetsAt(kEngineSection, 0, id, eFieldId) != BStore::eDone || !IsEngineId(id) ||
        store.GetInt(kEngineSection, kKey, kept.boots, eFieldBoots) != BStore::eDone ||
        kept.boots < 1)
        return {"", 0};
    kept.id.assign(reinterpret_cast<const char*>(id.Data()), id.Length());
    return kept;
}

class Saving : public INVCallback {
public:
    Saving(BStore& store, const SEngineIdentity& identity) : m_store(store), m_identity(identity) {}

    int Update() override
    {
        m_store.OpenSection(kEngineSection);
        BOctetString id(static_cast<unsigned>(m_identity.id.size()),
                        reinterpret_cast<const unsigned char*>(m_identity.id.data()));
        bool isSaved = m_store.SetOctets(kEngineSection, kKey, id, eFieldId, 0) == BStore::eDone &&
                       m_store.SetInt(kEngineSection, kKey, m_identity.boots, nullptr, eFieldBoots,
                                      0) == BStore::eDone;
        return isSaved ? 0 : 1;
    }

private:
    BStore& m_store;
    const SEngineIdentity& m_identity;
};

} // namespace

SEngineIdentity StartEngine(BStore* store)
{
    SEngineIdentity identity = store ? Kept(*store) : SEngineIdentity{"", 0};
    if (store)
        store->RequireRead(); // before another identity takes the place of its own
    if (identity.id.empty())
        identity.id = MakeId();
    if (identity.boots < kMostBoots)
        ++identity.boots;
    if (!store)
        return identity;
    Saving saving(*store, identity);
    store->Hold();
    store->RequestUpdate(&saving);
    if (!store->SaveHeld())
        throw BHostError(eExitStore, "the engine's boots cannot be kept in the store");
    return identity;
}

} // namespace VLK::host
