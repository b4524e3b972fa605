// Classes and handlers for sources that must not compile.
#pragma once

#include <vkmibh/impl.h>

namespace VLK {

enum EColor : int { eRed = 1 };
enum class EScoped : unsigned { eOne = 1 };
enum ELoose { eLoose = 1 };
enum class ENarrow : unsigned char { eOne = 1 };

class CGroup : public BMibScalarGroupImpl {
public:
    using BMibScalarGroupImpl::BMibScalarGroupImpl;
    int GetInt(unsigned, int&) { return 0; }
    int GetText(unsigned, BString&) { return 0; }
    int GetAt(const BObjectIdentifier&, unsigned, int&) { return 0; }
    int GetConst(unsigned, const int&) { return 0; }
    int GetScoped(unsigned, EScoped&) { return 0; }
    int GetLoose(unsigned, ELoose&) { return 0; }
    int SetNarrow(ESnmpSetOpCode, unsigned, ENarrow, void**) { return 0; }
    void GetVoid(unsigned, int&) {}
    int SetInt(ESnmpSetOpCode, unsigned, int, void**) { return 0; }
    int SetText(ESnmpSetOpCode, unsigned, const BString&, void**) { return 0; }
    int SetReference(ESnmpSetOpCode, unsigned, int&, void**) { return 0; }
    int SetNoSlot(ESnmpSetOpCode, unsigned, int) { return 0; }
};

class CTable : public BMibTableImpl {
public:
    using BMibTableImpl::BMibTableImpl;
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
    int GetInt(const BObjectIdentifier&, unsigned, int&) { return 0; }
    int GetColor(const BObjectIdentifier&, unsigned, EColor&) { return 0; }
    int GetScalar(unsigned, int&) { return 0; }
    int GetStatus(const BObjectIdentifier&, unsigned, ERowStatus&, int) { return 0; }
    int GetStatusPlain(const BObjectIdentifier&, unsigned, ERowStatus&) { return 0; }
    int SetInt(const BObjectIdentifier&, ESnmpSetOpCode, unsigned, int, void**) { return 0; }
    int SetStatus(const BObjectIdentifier&, ESnmpSetOpCode, unsigned, ERowStatus, void**)
    {
        return 0;
    }
};

class CRow : public BMibRowImpl {
public:
    using BMibRowImpl::BMibRowImpl;
    int GetInt(unsigned, int&) { return 0; }
    int GetAt(const BObjectIdentifier&, unsigned, int&) { return 0; }
};

class CStranger {
public:
    int GetInt(unsigned, int&) { return 0; }
};

} // namespace VLK
