// vkagentd with the content that is measured; VKWIRE_CONTENT chooses which.
#include "host/Agent.h"
#include "bench/wire/Content.h"
#include "host/HostError.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>
#include <vkmibh/impl.h>

using namespace VLK;

namespace {

BObjectIdentifier Below(std::initializer_list<unsigned> arcs)
{
    BObjectIdentifier oid(static_cast<unsigned>(std::size(wire::kBase)), wire::kBase);
    for (unsigned arc : arcs)
        oid.Append(arc);
    return oid;
}

// One column over rows in the order of their index, found by bisection.
class CTable : public BMibTableImpl {
public:
    explicit CTable(unsigned table) : BMibTableImpl(BString("wireTable"), Below({1, table, 1}))
    {
        const unsigned rows = wire::RowsOf(table);
        m_rows.reserve(rows);
        for (unsigned i = 1; i <= rows; ++i)
            m_rows.push_back(wire::kIndexStep * i);
    }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& next) override
    {
        const auto found = index.Length() == 0
                               ? m_rows.begin()
                               : std::upper_bound(m_rows.begin(), m_rows.end(), index[0]);
        return found != m_rows.end() && next.Set(*found);
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(const BObjectIdentifier& instance, unsigned, int& value)
    {
        if (instance.Length() != 1 ||
            !std::binary_search(m_rows.begin(), m_rows.end(), instance[0]))
            return eSnmpNoSuchName;
        value = static_cast<int>(instance[0]);
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
    std::vector<unsigned> m_rows;
};

class CConstant : public BMibScalarImpl {
public:
    explicit CConstant(unsigned number)
        : BMibScalarImpl("wireConstant", Below({2, number})), m_value(static_cast<int>(number))
    {
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned, int& value)
    {
        value = m_value;
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
    const int m_value;
};

class CVariable : public BMibScalarImpl {
public:
    CVariable() : BMibScalarImpl("wireVariable", Below({3})) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned, int& value)
    {
        value = m_value;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit)
            m_value = value;
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
    int m_value = 0;
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CTable::s_map[] = {
    ColumnRow<eKindInteger, &CTable::OnGet>(1, "wireValue", eAsnInteger, eRqReadOnly), kRqEnd};
VKMIBH_CONSTINIT SRqHndlrMapEntry CConstant::s_map[] = {
    ScalarRow<eKindInteger, &CConstant::OnGet>(1, "wireConstant", eAsnInteger, eRqReadOnly),
    kRqEnd};
VKMIBH_CONSTINIT SRqHndlrMapEntry CVariable::s_map[] = {
    ScalarRow<eKindInteger, &CVariable::OnGet, &CVariable::OnSet>(1, "wireVariable", eAsnInteger,
                                                                  eRqReadWrite),
    kRqEnd};

std::vector<std::unique_ptr<BMibImpl>> Content()
{
    std::vector<std::unique_ptr<BMibImpl>> content;
    if (wire::Serves("tables")) {
        for (unsigned k = wire::kSmallestTable; k <= wire::kLargestTable; ++k)
            content.push_back(std::make_unique<CTable>(k));
        content.push_back(std::make_unique<CVariable>());
    }
    if (wire::Serves("registrations")) {
        for (unsigned i = 1; i <= wire::kRegistrations; ++i)
            content.push_back(std::make_unique<CConstant>(i));
    }
    return content;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::unique_ptr<BMibImpl>> content = Content();
    host::SOptions options;
    if (std::optional<int> status = host::ParseOptions(argc, argv, options, std::cout))
        return *status;
    return host::RunAgent(options, [&](IMIBHandler& handler, ITrapSender&, INonVolatile*) {
        for (const std::unique_ptr<BMibImpl>& object : content) {
            object->Initialize();
            handler.RegisterSubtreeHandler(object.get());
        }
    });
}
