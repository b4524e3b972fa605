// Transactions: who asks, from where, in which protocol.
#pragma once

#include <vkmibh/containers.h>

namespace VLK {

// The requester's security parameters (RFC 3411 section 3.2.2).
struct BSecurityParams {
    int securityModel = 0;
    BString securityName;
    int securityLevel = 0;
};

struct BTransactionParameters {
    int protocolId = 0;
    int pduType = -1;
    int request = 0;
    int securityModel = 0;
    BString securityName;
    int securityLevel = 0;
    BString contextName;
};

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

class VKMIBH_API ITransactions {
public:
    virtual ~ITransactions();
    virtual bool GetParameters(unsigned int id, BTransactionParameters& params) = 0;
};

class VKMIBH_API BTransactions : public BSingleton {
public:
    BTransactions();
    ~BTransactions() override;
    void Destroy() override;

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

protected:
    bool Insert(int id, BTransaction* transaction);
    bool Remove(int id);
    bool Enlarge();
    void Clear();

private:
    friend struct SLayoutCheck;
    struct SEntry {
        int id;
        BTransaction* transaction;
    };
    BTransaction* Find(unsigned int id) const;
    TMutex m_lock;
    SEntry* m_entries;
    int m_capacity;
};

class VKMIBH_API BTransactionIdGenerator : public BSingleton {
public:
    BTransactionIdGenerator();
    ~BTransactionIdGenerator() override;
    void Destroy() override;

    static BTransactionIdGenerator* GetInstance();
    static void DestroyInstance();
    static std::atomic<BTransactionIdGenerator*> s_pInstance;
    unsigned int NextId();

private:
    atomic_t m_counter;
};

} // namespace VLK
