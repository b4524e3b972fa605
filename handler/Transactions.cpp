// The registry of open transactions.
#include <vkmibh/transactions.h>

#include <cstring>
#include <mutex>
#include <new>

namespace VLK {

namespace {
constexpr int kFirstCapacity = 8;
constexpr int kLastCapacity = 1024;
std::mutex g_creation;
} // namespace

std::atomic<BTransactions*> BTransactions::s_pInstance{nullptr};

BTransaction::~BTransaction() = default;

bool BTransaction::GetParams(BTransactionParameters&) { return false; }

bool BTransaction::GetLocalIpAddress(BIpAddress&) { return false; }

bool BTransaction::GetRemoteIpAddress(BIpAddress&) { return false; }

bool BTransaction::GetLocalUdpPort(unsigned int&) { return false; }

bool BTransaction::GetRemoteUdpPort(unsigned int&) { return false; }

ITransactions::~ITransactions() = default;

BTransactions::BTransactions() : m_lock(true), m_entries(nullptr), m_capacity(0) { Enlarge(); }

BTransactions::~BTransactions() { Clear(); }

void BTransactions::Destroy() { DestroyInstance(); }

BTransactions* BTransactions::GetInstance()
{
    BTransactions* instance = s_pInstance.load(std::memory_order_acquire);
    if (instance)
        return instance;
    std::lock_guard<std::mutex> guard(g_creation);
    instance = s_pInstance.load(std::memory_order_relaxed);
    if (!instance) {
        instance = new (std::nothrow) BTransactions;
        s_pInstance.store(instance, std::memory_order_release);
    }
    return instance;
}

void BTransactions::DestroyInstance()
{
    delete s_pInstance.exchange(nullptr, std::memory_order_acq_rel);
}

unsigned int BTransactions::StartTransaction(BTransaction* transaction)
{
    TMutexLock guard(m_lock);
    BTransactionIdGenerator* generator = BTransactionIdGenerator::GetInstance();
    const unsigned int id = generator ? generator->NextId() : 0;
    // CONTRACT: the id counts even when the registry is full; queries for it then find nothing,
    // and callers run their request all the same.
    Insert(static_cast<int>(id), transaction);
    return id;
}

bool BTransactions::StartTransaction(unsigned int id, BTransaction* transaction)
{
    TMutexLock guard(m_lock);
    return Insert(static_cast<int>(id), transaction);
}

void BTransactions::EndTransaction(unsigned int id)
{
    TMutexLock guard(m_lock);
    Remove(static_cast<int>(id));
}

bool BTransactions::GetParameters(unsigned int id, BTransactionParameters& params)
{
    TMutexLock guard(m_lock);
    BTransaction* transaction = Find(id);
    return transaction && transaction->GetParams(params);
}

bool BTransactions::GetLocalIpAddress(unsigned int id, BIpAddress& address)
{
    TMutexLock guard(m_lock);
    BTransaction* transaction = Find(id);
    return transaction && transaction->GetLocalIpAddress(address);
}

bool BTransactions::GetRemoteIpAddress(unsigned int id, BIpAddress& address)
{
    TMutexLock guard(m_lock);
    BTransaction* transaction = Find(id);
    return transaction && transaction->GetRemoteIpAddress(address);
}

bool BTransactions::GetLocalUdpPort(unsigned int id, unsigned int& port)
{
    TMutexLock guard(m_lock);
    BTransaction* transaction = Find(id);
    return transaction && transaction->GetLocalUdpPort(port);
}

bool BTransactions::GetRemoteUdpPort(unsigned int id, unsigned int& port)
{
    TMutexLock guard(m_lock);
    BTransaction* transaction = Find(id);
    return transaction && transaction->GetRemoteUdpPort(port);
}

int BTransactions::GetProtocolId(unsigned int id)
{
    TMutexLock guard(m_lock);
    const BTransaction* transaction = Find(id);
    return transaction ? transaction->ProtocolId() : -1;
}

// An entry with id 0 is free, so 0 is neither stored nor found.
bool BTransactions::Insert(int id, BTransaction* transaction)
{
    if (id == 0 || !transaction)
        return false;
    int slot = 0;
    while (slot < m_capacity && m_entries[slot].id != 0)
        ++slot;
    if (slot == m_capacity && !Enlarge())
        return false;
    m_entries[slot] = SEntry{id, transaction};
    return true;
}

bool BTransactions::Remove(int id)
{
    if (id == 0)
        return false;
    for (int i = 0; i < m_capacity; ++i) {
        if (m_entries[i].id == id) {
            m_entries[i] = SEntry{0, nullptr};
            return true;
        }
    }
    return false;
}

bool BTransactions::Enlarge()
{
    const int capacity = m_capacity ? m_capacity * 2 : kFirstCapacity;
    if (capacity > kLastCapacity)
        return false;
    SEntry* entries = new (std::nothrow) SEntry[static_cast<std::size_t>(capacity)]();
    if (!entries)
        return false;
    if (m_capacity)
        std::memcpy(entries, m_entries, sizeof(SEntry) * static_cast<std::size_t>(m_capacity));
    delete[] m_entries;
    m_entries = entries;
    m_capacity = capacity;
    return true;
}

void BTransactions::Clear()
{
    delete[] m_entries;
    m_entries = nullptr;
    m_capacity = 0;
}

BTransaction* BTransactions::Find(unsigned int id) const
{
    const int wanted = static_cast<int>(id);
    if (wanted == 0)
        return nullptr;
    for (int i = 0; i < m_capacity; ++i) {
        if (m_entries[i].id == wanted)
            return m_entries[i].transaction;
    }
    return nullptr;
}

} // namespace VLK
