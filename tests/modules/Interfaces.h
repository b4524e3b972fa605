// Interfaces and a sender of notifications that tests make up.
#pragma once

#include "modules/interfaces/InterfacesModule.h"

#include <vkmibh/testing/module.h>

#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <system_error>

namespace VLK {
namespace Test {

inline modules::SInterface Link(unsigned index, const std::string& name,
                                modules::EIfStatus oper = modules::eIfUp)
{
    modules::SInterface link;
    link.index = index;
    link.name = name;
    link.type = modules::eIfTypeEthernetCsmacd;
    link.admin = modules::eIfUp;
    link.oper = oper;
    return link;
}

class FakeInterfaces : public modules::IInterfaces {
public:
    std::vector<modules::SInterface> Read() override
    {
        ++reads;
        if (onRead)
            onRead();
        if (isBroken)
            throw std::system_error(ENOBUFS, std::generic_category(), "fake");
        return links;
    }

    std::vector<modules::SInterface> links;
    std::function<void()> onRead;
    int reads = 0;
    bool isBroken = false;
};

// Keeps each notification as "1.3...5.3: 1.3...1.7=7 ...".
class FakeTraps : public ITrapSender {
public:
    void SendTrap(const BTrap& trap, const char* agentName) override
    {
        BObjectIdentifier oid;
        std::string text = trap.GetV2TrapOid(oid) ? TextOf(oid) + ":" : "no form:";
        for (int i = 0; i < static_cast<int>(trap.Bindings().Count()); ++i) {
            const BVarBind& binding = trap.Bindings()[i];
            text += " " + TextOf(binding.Name()) + "=" +
                    std::to_string(int(binding.Value().Syntax())) + "/" +
                    binding.Value().ValToStr().c_str();
        }
        std::lock_guard<std::mutex> lock(m_lock);
        m_sent.push_back(agentName ? "through " + std::string(agentName) : text);
    }
    std::vector<std::string> Sent() const
    {
        std::lock_guard<std::mutex> lock(m_lock);
        return m_sent;
    }
    void Clear()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_sent.clear();
    }

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_sent;
};

// A linkDown (3) or linkUp (4) as FakeTraps keeps it.
inline std::string LinkTrap(int number, unsigned index, int admin, int oper)
{
    const std::string entry = " 1.3.6.1.2.1.2.2.1.";
    const std::string row = "." + std::to_string(index) + "=2/";
    return "1.3.6.1.6.3.1.1.5." + std::to_string(number) + ":" + entry + "1" + row +
           std::to_string(index) + entry + "7" + row + std::to_string(admin) + entry + "8" + row +
           std::to_string(oper);
}
inline std::string LinkDown(unsigned index, int admin, int oper)
{
    return LinkTrap(3, index, admin, oper);
}
inline std::string LinkUp(unsigned index, int admin, int oper)
{
    return LinkTrap(4, index, admin, oper);
}

} // namespace Test
} // namespace VLK
