// Implementations of every kind, for questions about their objects, and the
// answers in a line. They serve no requests.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/impl.h>

#include <stdexcept>
#include <string>
#include <thread>

namespace VLK {

constexpr SRqHndlrMapEntry InfoRow(unsigned column, const char* name, int syntax, int access,
                                   unsigned kind)
{
    return {column, name, syntax, access, kind, nullptr, nullptr, nullptr};
}

// kind, identifier, name, module, syntax, syntax name and access in one line.
inline std::string InfoText(const BMibObject& object)
{
    return std::to_string(object.kind) + " " + Test::TextOf(object.oid) + " " +
           object.name.c_str() + " " + object.module.c_str() + " " + std::to_string(object.syntax) +
           " '" + object.syntaxName.c_str() + "' " + std::to_string(object.access);
}

class CInfoGroup : public BMibScalarGroupImpl {
public:
    CInfoGroup() : BMibScalarGroupImpl(BString("INFO-MIB.grp"), Test::MakeOid("1.3.6.1.4.1.5"))
    {
        ResolveConstraints();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override
    {
        static SRqHndlrMapEntry s_map[] = {
            InfoRow(1, "grpInt", 2, 3, 1),           InfoRow(2, "grpOctets", 4, 4, 2),
            InfoRow(3, "grpOid", 6, 3, 3),           InfoRow(4, "grpAddress", 64, 3, 6),
            InfoRow(5, "grpCounter", 65, 3, 4),      InfoRow(6, "grpGauge", 66, 1, 4),
            InfoRow(7, "grpTicks", 67, 2, 4),        InfoRow(8, "grpOpaque", 68, 3, 2),
            InfoRow(9, "grpCounter64", 70, 3, 7),    InfoRow(10, "grpText", 4, 3, 5),
            InfoRow(11, "grpEnumKind", 2, 3, 10),    InfoRow(12, "grpEnumInt", 2, 4, 1),
            InfoRow(13, "grpRange", 2, 4, 1),        InfoRow(14, "grpConvention", 4, 4, 5),
            InfoRow(15, "grpTruth", 2, 4, 1),        InfoRow(16, "grpStrange", 99, 3, 2),
            InfoRow(17, "grpRefined", 4, 4, 5),      InfoRow(18, "grpNamedRange", 66, 3, 4),
            InfoRow(20, "grpHeaderOnly", 2, 3, 1),   InfoRow(30, "OTHER-MIB.borrowed", 2, 3, 1),
            InfoRow(31, "INFO-MIB.joined", 2, 3, 1), InfoRow(0, nullptr, 0, 0, 0),
        };
        return s_map;
    }
    const SConstraintMapEntry* GetConstraintMap() const override
    {
        static const SConstraintMapEntry s_constraints[] = {
            {1, 12, "", 0, 0},
            {3, 12, "twice", -7, 0},
            {3, 12, "twice", 5, 0},
            {3, 12, "five", 5, 0},
            {1, 20, "", 0, 0},
            {1, 21, "", 0, 0},
            {3, 21, "other", 44, 0},
            {4, 13, "", 0, 9},
            {3, 13, "stray", 3, 0},
            {5, 14, cszDisplayString, 0, 0},
            {2, 15, cszTruthValue, 0, 0},
            {5, 17, cszDisplayString, 0, 32},
            {4, 18, "Percent", 0, 100},
            {0, 0, nullptr, 0, 0},
        };
        return s_constraints;
    }
};

// Asked by another thread than the one that may hold the mutex.
inline bool IsLocked(TMutex& mutex) VKMIBH_TSA(no_thread_safety_analysis)
{
    if (mutex.Wait(0) != eWaitDone)
        return true;
    mutex.Done();
    return false;
}

class CInfoTable : public BMibTableImpl {
public:
    explicit CInfoTable(const char* name = "INFO-MIB.tab")
        : BMibTableImpl(BString(name), Test::MakeOid("1.3.6.1.4.1.6.1"))
    {
        ResolveConstraints();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override
    {
        static SRqHndlrMapEntry s_map[] = {
            InfoRow(1, "tabIndex", 2, 0, 1),  InfoRow(2, "tabName", 4, 5, 5),
            InfoRow(3, "tabStatus", 2, 5, 8), InfoRow(4, "tabEntry", 2, 5, 9),
            InfoRow(0, nullptr, 0, 0, 0),
        };
        return s_map;
    }
    const SConstraintMapEntry* GetConstraintMap() const override
    {
        static const SConstraintMapEntry s_constraints[] = {
            {2, 3, cszRowStatus, 0, 0}, {2, 4, cszEntryStatus, 0, 0}, {0, 0, nullptr, 0, 0}};
        return s_constraints;
    }
    // Rows 10 and 20.
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        if (m_throws)
            throw std::runtime_error("no rows");
        m_lastId = id;
        m_lastColumn = column;
        std::thread([this] { m_wasLocked = IsLocked(Mutex()); }).join();
        const unsigned row = index.Length() ? index[0] : 0;
        return row < 20 && nextIndex.Set(row < 10 ? 10u : 20u) ? m_answer : 0;
    }

    unsigned m_lastId = 0;
    unsigned m_lastColumn = 0;
    bool m_wasLocked = false;
    bool m_throws = false;
    int m_answer = 1;
};

class CInfoRow : public BMibRowImpl {
public:
    CInfoRow()
        : BMibRowImpl(BString("INFO-MIB.line"), Test::MakeOid("1.3.6.1.4.1.7.2"), 9, 9,
                      BObjectIdentifier())
    {
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override
    {
        static SRqHndlrMapEntry s_map[] = {InfoRow(1, "lineA", 2, 3, 1),
                                           InfoRow(2, "lineB", 2, 3, 1),
                                           InfoRow(0, nullptr, 0, 0, 0)};
        return s_map;
    }
};

class CInfoScalar : public BMibScalarImpl {
public:
    CInfoScalar(const char* name, const BObjectIdentifier& oid, SRqHndlrMapEntry* map)
        : BMibScalarImpl(BString(name), oid), m_map(map)
    {
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map; }

    // The first row's column: none, none in the other way, no row at all, one.
    static inline SRqHndlrMapEntry s_noColumn[] = {InfoRow(0, "theScalar", 2, 4, 1),
                                                   InfoRow(5, "second", 2, 4, 1),
                                                   InfoRow(0, nullptr, 0, 0, 0)};
    static inline SRqHndlrMapEntry s_allOnes[] = {InfoRow(~0u, "theScalar", 2, 4, 1),
                                                  InfoRow(0, nullptr, 0, 0, 0)};
    static inline SRqHndlrMapEntry s_empty[] = {InfoRow(0, nullptr, 0, 0, 0)};
    static inline SRqHndlrMapEntry s_column[] = {InfoRow(4, "theScalar", 2, 4, 1),
                                                 InfoRow(0, nullptr, 0, 0, 0)};

private:
    SRqHndlrMapEntry* m_map;
};

// An implementation of no particular kind and without a map.
class CInfoPlain : public BMibImpl {
public:
    CInfoPlain() : BMibImpl(BString("INFO-MIB.pt"), Test::MakeOid("1.3.8")) {}
    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned, BVarBind&) override { return eSnmpGenErr; }
    int Set(unsigned, ESnmpSetOpCode, void**, const BVarBind&) override { return eSnmpGenErr; }
    int NextInstance(unsigned, BVarBind&) override { return 0; }
};

} // namespace VLK
