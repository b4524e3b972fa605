// A request handler with implementations behind it, and a transaction to ask it in.
#pragma once

#include <vkmibh/handler.h>

#include <memory>
#include <vector>

namespace VLK {

inline BObjectIdentifier MakeOid(const char* dotted) { return BObjectIdentifier(BString(dotted)); }

// An agent with an open transaction.
class Agent {
public:
    Agent() : m_handler(nullptr), m_transaction(1)
    {
        m_id = BTransactions::GetInstance()->StartTransaction(&m_transaction);
    }
    ~Agent()
    {
        BTransactions::GetInstance()->EndTransaction(m_id);
        for (auto& impl : m_impls)
            m_handler.UnregisterSubtreeHandler(impl.get());
    }
    void Add(BMibImpl* impl)
    {
        m_impls.emplace_back(impl);
        impl->Initialize();
        m_handler.RegisterSubtreeHandler(impl);
    }
    int Query(int pduType, BVarBindList& list)
    {
        int errorIndex = 0;
        return m_handler.Query(pduType, static_cast<int>(m_id), m_security, m_context, list,
                               errorIndex);
    }
    BMibHandler& Handler() { return m_handler; }

private:
    BMibHandler m_handler;
    BTransaction m_transaction;
    unsigned m_id = 0;
    BSecurityParams m_security;
    BString m_context;
    std::vector<std::unique_ptr<BMibImpl>> m_impls;
};

} // namespace VLK
