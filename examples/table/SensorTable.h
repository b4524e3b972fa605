#pragma once

#include <vkmibh/impl.h>

#include <map>
#include <string>

namespace VLK::examples {

// The sensors of a file that another program writes, a line each: index, reading
// and name, such as "3 -18 cold store". Other lines are passed over.
class CSensorTable : public BMibTableImpl {
public:
    enum EColumn { eIndex = 1, eName = 2, eReading = 3 };

    explicit CSensorTable(const std::string& path);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    struct SSensor {
        int reading;
        std::string name;
    };

    void Refresh(unsigned id);
    const SSensor* Find(unsigned id, const BObjectIdentifier& instance);
    int OnGet_Name(const BObjectIdentifier& instance, unsigned id, BString& value);
    int OnGet_Reading(const BObjectIdentifier& instance, unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    const std::string m_path;
    unsigned m_readFor = 0; // the request that the rows were read for
    std::map<unsigned, SSensor> m_sensors;
};

// What is registered with the agent.
class CSensorModule : public BMibImplGroup {
public:
    explicit CSensorModule(const std::string& path) : m_table(path) {}
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_table; }

private:
    CSensorTable m_table;
};

} // namespace VLK::examples
