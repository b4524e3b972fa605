// Transactions: who asks, from where, in which protocol.
#pragma once

#include <vkmibh/containers.h>
#include <vkmibh/octets.h>

namespace VLK {

// The requester's security parameters (RFC 3411 section 3.2.2).
struct BSecurityParams {
    int securityModel = 0;
    BString securityName;
    int securityLevel = 0;
};

// What a transaction's owner knows of its request.
struct BTransactionParameters {
    int protocolId = 0; // 0 means SNMPv1
    int pduType = -1;   // 160 get, 161 get-next, 163 set, -1 not known yet
    int request = 0;    // the owner's own word
    int securityModel = 0;
    BString securityName;
    int securityLevel = 0;
    BString contextName;
};

// One request's transport and security context, for as long as the request
// runs. The base knows only the protocol; owners override what they can tell.
//
//   class CUdpTransaction : public BTransaction {
//       bool GetRemoteUdpPort(unsigned int& port) override { port = m_port; return true; }
//   };
//
// Ownership: owns nothing.
// Threads:   the getters run under the registry's lock, on whichever thread
//            asks. They may call the registry themselves, but must not wait
//            for another thread that does.
// Errors:    false = not known, the argument is untouched.
// Contract:  protocol id 0 means SNMPv1.
class VKMIBH_API BTransaction {
public:
    explicit BTransaction(int protocolId) : m_protocolId(protocolId) {}
    virtual ~BTransaction();
    virtual bool GetParams(BTransactionParameters& params);
    virtual bool GetLocalIpAddress(BIpAddress& address);
    virtual bool GetRemoteIpAddress(BIpAddress& address);
    virtual bool GetLocalUdpPort(unsigned int& port);
    virtual bool GetRemoteUdpPort(unsigned int& port);
    int ProtocolId() const { return m_protocolId; }

protected:
    void SetProtocolId(int protocolId) { m_protocolId = protocolId; }

private:
    friend struct SLayoutCheck;
    int m_protocolId;
};

// What an implementation may ask about the request it serves.
//
// Ownership: none.
// Threads:   any.
// Errors:    false = the transaction is not open, or does not tell.
// Contract:  slot order.
class VKMIBH_API ITransactions {
public:
    virtual ~ITransactions();
    virtual bool GetParameters(unsigned int id, BTransactionParameters& params) = 0;
};

// The open transactions of the process, by id.
//
//   BTransactions* registry = BTransactions::GetInstance();
//   unsigned int id = registry->StartTransaction(&transaction);
//   handler.Query(ePduGet, id, ...);
//   registry->EndTransaction(id);
//
// Ownership: the transactions stay their callers', who keep them alive until
//            EndTransaction() has returned.
// Threads:   any; one lock guards the registry, and is held while a getter of
//            a transaction runs (it is released when that getter throws).
//            DestroyInstance() is for when nobody uses the registry any more.
// Errors:    false, or -1 from GetProtocolId(), for an id that is not open.
//            Without memory GetInstance() is null, StartTransaction() may give
//            the id 0, and a transaction may stay unknown as in a full registry.
// Contract:  field order is ABI. Ids rise by one, starting at 1; 0 is never
//            stored and never found. Up to 1024 transactions are open at once:
//            beyond them ids are still handed out, and then are unknown. An id
//            opened twice is found, and ended, in the lower slot first.
class VKMIBH_API BTransactions : public BSingleton {
public:
    BTransactions();

    static BTransactions* GetInstance();
    static void DestroyInstance();
    static std::atomic<BTransactions*> s_pInstance;

    unsigned int StartTransaction(BTransaction* transaction);
    bool StartTransaction(unsigned int id, BTransaction* transaction);
    void EndTransaction(unsigned int id);
    bool GetParameters(unsigned int id, BTransactionParameters& params);
    bool GetLocalIpAddress(unsigned int id, BIpAddress& address);
    bool GetRemoteIpAddress(unsigned int id, BIpAddress& address);
    bool GetLocalUdpPort(unsigned int id, unsigned int& port);
    bool GetRemoteUdpPort(unsigned int id, unsigned int& port);
    int GetProtocolId(unsigned int id);

    // Virtual operations, in slot order.
    ~BTransactions() override;
    void Destroy() override;

protected:
    // Steps of the operations above; they take no lock. Insert() refuses id 0 and null.
    bool Insert(int id, BTransaction* transaction) VKMIBH_TSA(requires_capability(m_lock));
    bool Remove(int id) VKMIBH_TSA(requires_capability(m_lock));
    bool Enlarge() VKMIBH_TSA(requires_capability(m_lock));
    void Clear() VKMIBH_TSA(requires_capability(m_lock));
    int Capacity() const VKMIBH_TSA(requires_capability(m_lock)) { return m_capacity; }

private:
    friend struct SLayoutCheck;
    struct SEntry {
        int id;
        BTransaction* transaction;
    };
    VKMIBH_LOCAL BTransaction* Find(unsigned int id) const VKMIBH_TSA(requires_capability(m_lock));

    TMutex m_lock;
    SEntry* m_entries VKMIBH_TSA(guarded_by(m_lock));
    int m_capacity VKMIBH_TSA(guarded_by(m_lock));
};

// Numbers the transactions: 1, 2, ... and, after 4294967295, 1 again.
//
// Ownership: none.
// Threads:   any; two that call NextId() at once may get the same number, so
//            the registry calls it under its lock.
// Errors:    GetInstance() is null only without memory.
// Contract:  counts for the life of the process, or until it is destroyed.
class VKMIBH_API BTransactionIdGenerator : public BSingleton {
public:
    // Counts on from `last`.
    explicit BTransactionIdGenerator(unsigned int last = 0);

    static BTransactionIdGenerator* GetInstance();
    static void DestroyInstance();
    static std::atomic<BTransactionIdGenerator*> s_pInstance;
    unsigned int NextId();

    // Virtual operations, in slot order.
    ~BTransactionIdGenerator() override;
    void Destroy() override;

private:
    friend struct SLayoutCheck;
    atomic_t m_counter;
};

} // namespace VLK
