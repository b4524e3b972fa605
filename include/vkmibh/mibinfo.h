// MIB information: names, kinds, syntaxes and labels of the objects served.
#pragma once

#include <vkmibh/containers.h>
#include <vkmibh/labels.h>

namespace VLK {

class BMibImpl;
class BMibInfo;

// What look-ups of names and parameters return when there is no such object.
constexpr int kMibInfoNotFound = static_cast<int>(0x80010002u);

// The MAX-ACCESS of a request-handler map's access code.
VKMIBH_API EMaxAccess MaxAccessOf(int access);

enum EMibObjectKind {
    eMibObjectRegistrationPoint = 0,
    eMibObjectLeaf = 1,
    eMibObjectColumn = 2,
    eMibObjectTable = 3,
    eMibObjectRow = 4,
    eMibObjectScalarGroup = 5
};

// Syntaxes beyond those of EAsnSyntax.
enum EMibSyntax {
    eMibSyntaxDisplayString = 229,
    eMibSyntaxEnumerated = 230,
    eMibSyntaxNotLeaf = 231 // the object is the implementation itself
};

// What GetObjParams() tells of an object.
struct BMibObject {
    int kind = eMibObjectRegistrationPoint; // an EMibObjectKind
    BObjectIdentifier oid;
    BString name;
    BString module;
    int syntax = 0; // an EAsnSyntax or EMibSyntax
    BString syntaxName;
    int access = 0; // the map's code, an ERqAccess; 0 for what is no leaf
    const BMibInfo* info = nullptr;
};

// What can be asked of the objects that an implementation serves.
//
//   BMibObject object;
//   IMIBInfo* info = handler->GetIMibInfo();
//   if (info && info->GetObjParams(BString("sysContact.0"), object) == 0)
//       Print(object.name, object.syntaxName);
//
// A name is "object" or "MODULE.object", and either may be followed by a full
// stop and a dotted-decimal instance, which must be valid and does not change
// the object that is found.
//
// Ownership: the implementation's; what it fills belongs to the caller.
// Threads:   any; NextInstanceInColumn() takes the implementation's mutex.
// Errors:    names, parameters and lists: 0 = found, else kMibInfoNotFound and
//            the argument is unchanged; a list that memory did not suffice for
//            keeps what it got. Enumerations and instances: 1/0.
// Contract:  slot order is ABI.
class VKMIBH_API IMIBInfo {
public:
    // Virtual operations, in slot order.
    virtual ~IMIBInfo();
    virtual int Name2Oid(const BString& name, BObjectIdentifier& oid) const = 0;
    // By name as Name2Oid() finds it; by the identifier of the implementation, of an object or of
    // an instance. A syntax without a name leaves object.syntaxName as it was.
    virtual int GetObjParams(const BString& name, BMibObject& object) const = 0;
    virtual int GetObjParams(const BObjectIdentifier& oid, BMibObject& object) const = 0;
    // All objects in the order of their columns.
    virtual int GetLeafList(BOidArray& leaves) const = 0;
    virtual int GetLeafList(BStringArray& leaves) const = 0;
    // `object` and `label` are exact.
    virtual int GetEnumValue(const BString& object, const BString& label, int& value) const = 0;
    virtual int GetEnumLabel(const BString& object, int value, BString& label) const = 0;
    // An object's own name or identifier is a leaf, that of an instance is not.
    virtual bool IsLeaf(const BString& name) const = 0;
    virtual bool IsLeaf(const BObjectIdentifier& oid) const = 0;
    // The table's or its entry's.
    virtual bool IsTable(const BString& name) const = 0;
    virtual bool IsTable(const BObjectIdentifier& oid) const = 0;
    // The row after `index` (the first for an empty one); 0 when there is none, when the table is
    // another, and for what is no table.
    virtual int NextInstanceInColumn(unsigned id, const BString& tableName, unsigned column,
                                     const BObjectIdentifier& index,
                                     BObjectIdentifier& nextIndex) const = 0;
};

// Answers from its owner's request-handler map and resolved constraints. Every
// BMibImpl has one.
//
// Ownership: part of its owner.
// Threads:   as IMIBInfo; SetOwner() belongs to the owner's construction.
// Errors:    as IMIBInfo; without an owner nothing is found.
// Contract:  field order is ABI. A scalar implementation has one object, the
//            first row of its map: at the owner's identifier followed by the
//            row's column, or without it when that is 0 or 4294967295.
class VKMIBH_API BMibInfo : public IMIBInfo {
public:
    BMibInfo() noexcept : m_owner(nullptr) {}
    BMibInfo(const BMibInfo&) = delete;
    BMibInfo& operator=(const BMibInfo&) = delete;

    // Takes module and object name from the owner's name, at its first full stop.
    void SetOwner(BMibImpl* owner);

    // Takes a name apart; false when it is none. `suffix` is all that follows the object, its full
    // stop included.
    static bool SplitName(const BString& name, BString& module, BString& object, BString& suffix);

    // Virtual operations, in slot order.
    ~BMibInfo() override;
    int Name2Oid(const BString& name, BObjectIdentifier& oid) const override;
    int GetObjParams(const BString& name, BMibObject& object) const override;
    int GetObjParams(const BObjectIdentifier& oid, BMibObject& object) const override;
    int GetLeafList(BOidArray& leaves) const override;
    int GetLeafList(BStringArray& leaves) const override;
    int GetEnumValue(const BString& object, const BString& label, int& value) const override;
    int GetEnumLabel(const BString& object, int value, BString& label) const override;
    bool IsLeaf(const BString& name) const override;
    bool IsLeaf(const BObjectIdentifier& oid) const override;
    bool IsTable(const BString& name) const override;
    bool IsTable(const BObjectIdentifier& oid) const override;
    int NextInstanceInColumn(unsigned id, const BString& tableName, unsigned column,
                             const BObjectIdentifier& index,
                             BObjectIdentifier& nextIndex) const override;

private:
    friend struct SLayoutCheck;

    BMibImpl* m_owner;
    BString m_moduleName;
    BString m_objectName;
};

} // namespace VLK
