#include "host/config/Configuration.h"

#include <algorithm>
#include <tuple>

namespace VLK::host {

namespace {

SView MakeView(const char* name, const char* subtree, const BOctetString& mask)
{
    SView view;
    view.name = name;
    view.families.push_back({BObjectIdentifier(BString(subtree)), mask, eFilterIncluded});
    return view;
}

std::vector<SView> MakeBuiltInViews()
{
    // The first arc may be any: a mask that asks for none.
    const unsigned char anyArc[] = {0};
    return {MakeView(kViewEverything, "1", BOctetString(sizeof anyArc, anyArc)),
            MakeView(kViewSystemOnly, "1.3.6.1.2.1.1", BOctetString())};
}

auto Tie(const STrapSink& sink)
{
    return std::tie(sink.address, sink.protocol, sink.community, sink.user, sink.level,
                    sink.isInform, sink.timeout, sink.retries, sink.security.securityModel,
                    sink.security.securityName, sink.security.securityLevel, sink.context);
}

} // namespace

bool STrapSink::operator==(const STrapSink& other) const { return Tie(*this) == Tie(other); }

const std::vector<SView>& BuiltInViews()
{
    static const auto* const views = new std::vector<SView>(MakeBuiltInViews());
    return *views;
}

void AddCommunity(SConfiguration& configuration, const SCommunity& community,
                  const std::string (&views)[3])
{
    SAccess access;
    access.isPrefix = true;
    std::copy(std::begin(views), std::end(views), access.views);
    configuration.communities.push_back(community);
    configuration.groups.push_back(
        {community.name,
         {{eModelV1, community.securityName}, {eModelV2c, community.securityName}},
         {access}});
}

void AddUser(SConfiguration& configuration, const SUser& user, const std::string (&views)[3])
{
    SAccess access;
    access.isPrefix = true;
    access.model = eModelUsm;
    access.level = user.StrongestLevel();
    std::copy(std::begin(views), std::end(views), access.views);
    configuration.users.push_back(user);
    configuration.groups.push_back({user.name, {{eModelUsm, user.name}}, {access}});
}

void OpenConsole(SConfiguration& configuration)
{
    SGroup& console = configuration.groups.front();
    if (!console.access.empty())
        return;
    SAccess access;
    access.isPrefix = true;
    std::fill(std::begin(access.views), std::end(access.views), kViewEverything);
    console.access.push_back(access);
}

} // namespace VLK::host
