// An agent of hand-written and library regions behind an access control, made from
// a plain one, and comparing itself with it.
#pragma once

#include "tests/support/ListHandler.h"
#include "tests/support/MixedModules.h"

#include <functional>
#include <vkmibh/testing/requests.h>

namespace VLK {
namespace Test {

// Outer regions are lists: modules of the library do not know of regions inside.
class MixedAgent {
public:
    explicit MixedAgent(const PlainAgent& plain)
        : m_plain(plain), m_access(plain), m_handler(&m_access), m_v1(m_handler, kV1),
          m_v2(m_handler, kV2c)
    {
        for (const auto& [region, kind] : plain.regions) {
            Add(region, kind);
            m_handler.RegisterSubtreeHandler(m_modules.back().get());
        }
    }
    ~MixedAgent()
    {
        for (const auto& module : m_modules)
            m_handler.UnregisterSubtreeHandler(module.get());
    }
    MixedAgent(const MixedAgent&) = delete;
    MixedAgent& operator=(const MixedAgent&) = delete;

    // What differs from the plain agent's answer; empty when nothing does.
    std::string CompareGet(const std::vector<Arcs>& names, bool isV1)
    {
        return Compare("GET", ePduGet, names, isV1, m_plain.Get(names, isV1));
    }
    // A GETBULK is a GETNEXT here.
    std::string CompareGetNext(const std::vector<Arcs>& names, bool isV1, bool isBulk = false)
    {
        return Compare("GETNEXT", isBulk ? ePduGetBulk : ePduGetNext, names, isV1,
                       m_plain.GetNext(names, isV1));
    }
    // From before everything to the end of what the plain agent shows.
    std::string CompareWalk(bool isV1)
    {
        for (Arcs name = {1};;) {
            std::string difference = CompareGetNext({name}, isV1);
            const SPlainAnswer wanted = m_plain.GetNext({name}, isV1);
            if (!difference.empty() || wanted.status != eSnmpNoError ||
                wanted.bindings[0].value.syntax == eEndOfMibView)
                return difference;
            name = wanted.bindings[0].name;
        }
    }

    // The same SET as that which `wanted` has made on the plain agent.
    std::string CompareSet(const PlainList& list, const PlainFailing& failing, bool isV1,
                           const PlainSet& wanted)
    {
        BVarBindList bindings;
        for (const SPlainBinding& binding : list)
            bindings.Append(MakeOid(binding.name), SyntaxOf(binding.value));
        m_record.failing = failing;
        Client& client = isV1 ? m_v1 : m_v2;
        const int status = client.Query(ePduSet, bindings);
        m_record.failing.clear();
        if (status != wanted.status || client.errorIndex != wanted.index)
            return "SET: " + Told(status, client.errorIndex) + ", want " +
                   Told(wanted.status, wanted.index);
        if (m_record.open != 0 || !m_record.trouble.empty())
            return "SET: " + std::to_string(m_record.open) + " slots left," + m_record.trouble;
        return CompareValues();
    }
    // Ends the time of all rows that wait for their activation.
    std::string CompareTimed()
    {
        std::set<Arcs> wanted;
        for (const auto& [name, value] : m_plain.values) {
            const auto* const owner = m_plain.OwnerOf(name);
            if (owner->second == ePlainRows && name[owner->first.size()] == kPlainStatus &&
                value.text != "1")
                wanted.insert(name);
        }
        BTimer::GetInstance()->Timeout(MixedRows::kForEver);
        return m_record.timedOut == wanted ? "" : "other rows are timed";
    }

private:
    class Access : public IAccessControl {
    public:
        explicit Access(const PlainAgent& plain) : m_plain(plain) {}
        int CheckAccess(const BSecurityParams&, unsigned char kind, const BString&,
                        const BVarBind& binding) override
        {
            const Arcs name = ArcsOf(binding.Name());
            const auto& refused = kind == eAccessWrite ? m_plain.unwritable : m_plain.unreadable;
            return refused.count(name) ? 1 : 0;
        }

    private:
        const PlainAgent& m_plain;
    };

    void Add(const Arcs& region, EPlainKind kind)
    {
        switch (kind) {
        case ePlainList:
            AddList(region);
            break;
        case ePlainScalars:
            AddCells(std::make_unique<MixedScalars>(region, m_record), region);
            break;
        case ePlainTable: {
            auto table = std::make_unique<MixedTable>(region, m_record);
            for (const auto& [of, index] : m_plain.tableRows) {
                if (of == region)
                    table->rows.insert(index);
            }
            AddCells(std::move(table), region);
            break;
        }
        case ePlainRows:
            AddRows(region);
            break;
        }
    }
    template <class Visit>
    void ForEachOf(const Arcs& region, Visit visit) const
    {
        for (const auto& [name, value] : m_plain.values) {
            if (m_plain.OwnerOf(name)->first == region)
                visit(name, value);
        }
    }
    void AddList(const Arcs& region)
    {
        auto list = std::make_unique<ListHandler>(MakeOid(region));
        list->keepsLog = false;
        ForEachOf(region, [&](const Arcs& name, const SPlainValue& value) {
            list->instances[name] = SyntaxOf(value);
        });
        m_contents.emplace_back([list = list.get()] {
            PlainValues values;
            for (const auto& [name, value] : list->instances)
                values[name] = PlainOf(value);
            return values;
        });
        m_modules.push_back(std::move(list));
    }
    template <class Module>
    void AddCells(std::unique_ptr<Module> module, const Arcs& region)
    {
        ForEachOf(region, [&](const Arcs& name, const SPlainValue& value) {
            module->cells.cells[name] = value;
        });
        m_contents.emplace_back([module = module.get()] { return module->cells.cells; });
        m_modules.push_back(std::move(module));
    }
    void AddRows(const Arcs& region)
    {
        auto rows = std::make_unique<MixedRows>(region, m_record);
        ForEachOf(region,
                  [&](const Arcs& name, const SPlainValue& value) { rows->Fill(name, value); });
        m_contents.emplace_back([rows = rows.get()] { return rows->Cells(); });
        m_modules.push_back(std::move(rows));
    }

    std::string Compare(const char* what, EPduType pdu, const std::vector<Arcs>& names, bool isV1,
                        const SPlainAnswer& wanted)
    {
        BVarBindList list;
        for (const Arcs& name : names)
            list.Append(MakeOid(name));
        Client& client = isV1 ? m_v1 : m_v2;
        const int status = client.Query(pdu, list);
        const std::string asked = std::string(what) + (isV1 ? " (v1) " : " ");
        if (status != wanted.status || client.errorIndex != wanted.index)
            return asked + Told(status, client.errorIndex) + ", want " +
                   Told(wanted.status, wanted.index);
        for (size_t i = 0; i < names.size(); ++i) {
            const BVarBind& got = list[static_cast<int>(i)];
            const bool isAnswered = status == eSnmpNoError || int(i) + 1 < wanted.index;
            const bool isKnown = isAnswered && i < wanted.bindings.size();
            if (ArcsOf(got.Name()) != (isKnown ? wanted.bindings[i].name : names[i]) ||
                (isKnown && !(PlainOf(got.Value()) == wanted.bindings[i].value)))
                return asked + TextOf(names[i]) + " gives " + TextOf(got.Name()) + " = " +
                       got.Value().ValToStr().c_str();
        }
        return "";
    }
    std::string CompareValues() const
    {
        PlainValues values;
        for (const auto& contents : m_contents)
            values.merge(contents());
        for (const auto& [name, value] : m_plain.values) {
            const auto found = values.find(name);
            if (found == values.end() || !(found->second == value))
                return "SET: " + TextOf(name) + " is not " + value.text;
        }
        return values.size() == m_plain.values.size() ? "" : "SET: more instances than there are";
    }
    static std::string Told(int status, int index)
    {
        return "status " + std::to_string(status) + " at " + std::to_string(index);
    }

    const PlainAgent& m_plain;
    SMixedRecord m_record;
    Access m_access;
    BMibHandler m_handler;
    std::vector<std::unique_ptr<BMibSubtreeHandler>> m_modules;
    std::vector<std::function<PlainValues()>> m_contents;
    Client m_v1;
    Client m_v2;
};

} // namespace Test
} // namespace VLK
