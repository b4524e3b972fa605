// From a file's tables to a configuration. Only the file's reader includes this.
#pragma once

#include "host/config/ConfigTable.h"
#include "host/config/Configuration.h"

#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace VLK::host {

// Goes on after a problem, to find the others; what it returns counts when there
// was none.
class BConfigReader {
public:
    // `isPrivate`: nobody but its owner may read or write the file.
    BConfigReader(BProblems& problems, bool isPrivate)
        : m_problems(problems), m_isPrivate(isPrivate)
    {
    }
    SConfiguration Read(const toml::table& root);

private:
    // What is defined, and where.
    using CPlaces = std::map<std::string, SPlace>;

    void ReadListen(BConfigTable& root);
    void ReadStore(BConfigTable& root);
    void ReadContexts(BConfigTable& root);
    void ReadView(BConfigTable& table);
    void ReadFamilies(BConfigTable& table, const char* key, EFilterType type, SView& view);
    void ReadSubtree(const SText& subtree, const std::optional<SText>& mask, EFilterType type,
                     SView& view);
    void RefuseLongRows(BConfigTable& table, const SView& view);
    void ReadGroup(BConfigTable& table);
    void ReadMember(BConfigTable& table, SGroup& group);
    void ReadCommunity(BConfigTable& table);
    void ReadRights(BConfigTable& table, const SText& who, SCommunity& community);
    std::vector<BNetwork> ReadSources(BConfigTable& table);
    void ReadUser(BConfigTable& table);
    std::string ReadPassphrase(BConfigTable& table, const char* protocol, const char* key,
                               const char* fileKey);
    void ReadAccess(BConfigTable& table);
    void ReadAlarmCommunity(BConfigTable& root);
    void ReadTrapSink(BConfigTable& table);
    bool ReadSinkCommunity(BConfigTable& table, STrapSink& sink);
    bool ReadSinkUser(BConfigTable& table, STrapSink& sink);
    const SCommunity* Known(const SText& name);

    // The value of `key`, checked as a name; nothing when it is absent or wrong.
    std::optional<SText> Name(BConfigTable& table, const char* key, bool isNeeded);
    bool Define(CPlaces& places, const char* what, const SText& name);
    // A view's name; empty when it is absent or unknown.
    std::string View(BConfigTable& table, const char* key);
    std::string Context(BConfigTable& table, bool isPrefix);
    bool ReadAddress(const SText& text, BTransportAddress& address);
    void Claim(ESecurityModel model, const SText& securityName, const std::string& group);
    void AddMember(SGroup& group, ESecurityModel model, const SText& securityName);
    bool IsMember(const std::string& securityName) const;
    void Refuse(const SText& value, const std::string& why);

    BProblems& m_problems;
    const bool m_isPrivate;
    SConfiguration m_made;
    std::set<std::string> m_subtrees; // of the view that is read
    std::set<std::tuple<std::string, std::string, int, bool>> m_sinks;
    CPlaces m_views;
    CPlaces m_groups;
    CPlaces m_communities;
    CPlaces m_users;
    std::map<std::pair<int, std::string>, std::string> m_members; // their group
};

} // namespace VLK::host
