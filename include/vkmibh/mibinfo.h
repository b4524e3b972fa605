// MIB information: names, kinds, syntaxes and labels of the objects served.
#pragma once

#include <vkmibh/containers.h>

namespace VLK {

class BMibImpl;
class BMibInfo;

enum ERowStatus : int {
    eRowActive = 1,
    eRowNotInService = 2,
    eRowNotReady = 3,
    eRowCreateAndGo = 4,
    eRowCreateAndWait = 5,
    eRowDestroy = 6
};
enum EEntryStatus : int {
    eEntryValid = 1,
    eEntryCreateRequest = 2,
    eEntryUnderCreation = 3,
    eEntryInvalid = 4
};
enum EStorageType {
    eStorageOther = 1,
    eStorageVolatile = 2,
    eStorageNonVolatile = 3,
    eStoragePermanent = 4,
    eStorageReadOnly = 5
};
enum EMaxAccess {
    eMaxAccessNone = 0,
    eMaxAccessNotify = 1,
    eMaxAccessReadOnly = 2,
    eMaxAccessReadWrite = 3,
    eMaxAccessReadCreate = 4
};
enum ESecurityLevel { eNoAuthNoPriv = 1, eAuthNoPriv = 2, eAuthPriv = 3 };
enum EFilterType { eFilterIncluded = 1, eFilterExcluded = 2 };

VKMIBH_API const char* LabelRowStatus(ERowStatus value);
VKMIBH_API const char* LabelStorageType(EStorageType value);
VKMIBH_API const char* LabelMaxAccess(EMaxAccess value);
VKMIBH_API const char* LabelSecurityModel(int value);
VKMIBH_API const char* LabelSecurityLevel(ESecurityLevel value);
VKMIBH_API const char* LabelFilterType(EFilterType value);

// What GetObjParams() tells of an object.
struct BMibObject {
    int kind = 0;
    BObjectIdentifier oid;
    BString name;
    BString module;
    int syntax = 0;
    BString syntaxName;
    int access = 0;
    const BMibInfo* info = nullptr;
};

class VKMIBH_API IMIBInfo {
public:
    virtual ~IMIBInfo();
    virtual int Name2Oid(const BString& name, BObjectIdentifier& oid) const = 0;
    virtual int GetObjParams(const BString& name, BMibObject& object) const = 0;
    virtual int GetObjParams(const BObjectIdentifier& oid, BMibObject& object) const = 0;
    virtual int GetLeafList(BOidArray& leaves) const = 0;
    virtual int GetLeafList(BStringArray& leaves) const = 0;
    virtual int GetEnumValue(const BString& object, const BString& label, int& value) const = 0;
    virtual int GetEnumLabel(const BString& object, int value, BString& label) const = 0;
    virtual bool IsLeaf(const BString& name) const = 0;
    virtual bool IsLeaf(const BObjectIdentifier& oid) const = 0;
    virtual bool IsTable(const BString& name) const = 0;
    virtual bool IsTable(const BObjectIdentifier& oid) const = 0;
    virtual int NextInstanceInColumn(unsigned id, const BString& tableName, unsigned column,
                                     const BObjectIdentifier& index,
                                     BObjectIdentifier& nextIndex) const = 0;
};

class VKMIBH_API BMibInfo : public IMIBInfo {
public:
    BMibInfo() noexcept : m_owner(nullptr) {}
    ~BMibInfo() override;
    BMibInfo(const BMibInfo&) = delete;
    BMibInfo& operator=(const BMibInfo&) = delete;
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

    void SetOwner(BMibImpl* owner);

private:
    friend struct SLayoutCheck;
    BMibImpl* m_owner;
    BString m_moduleName;
    BString m_objectName;
};

} // namespace VLK
