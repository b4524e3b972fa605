// The modules of vkagentd as real clients see them.
#include "RunningAgent.h"

#include <algorithm>
#include <net/if.h>

namespace {

class ServedModules : public testing::Test {
protected:
    std::string Value(const std::string& name) const
    {
        return agent.Ask("snmpget", "2c", "public", {name}, {"-On", "-Oqv"}).output;
    }
    // The values below an object, a line each.
    Arguments Walk(const std::string& name) const
    {
        return Lines(agent.Ask("snmpwalk", "2c", "public", {name}, {"-On", "-Oqv"}).output);
    }

    TempDir directory;
    RunningAgent agent{directory.File("store.db")};
};

TEST_F(ServedModules, ShowTheInterfacesOfTheKernel)
{
    const Arguments names = Walk(".1.3.6.1.2.1.31.1.1.1.1");
    const Arguments indexes = Walk(".1.3.6.1.2.1.2.2.1.1");
    ASSERT_FALSE(names.empty());
    ASSERT_EQ(names.size(), indexes.size());
    for (size_t i = 0; i < names.size(); ++i) {
        std::string name = names[i];
        name.erase(std::remove(name.begin(), name.end(), '"'), name.end());
        EXPECT_EQ(std::to_string(if_nametoindex(name.c_str())), indexes[i]) << name;
    }
    EXPECT_EQ(Value(".1.3.6.1.2.1.2.1.0"), std::to_string(names.size()) + "\n");
}

TEST_F(ServedModules, ShowTheHost)
{
    long pages = sysconf(_SC_PHYS_PAGES) * (sysconf(_SC_PAGESIZE) / 1024);
    EXPECT_EQ(Value(".1.3.6.1.2.1.25.2.2.0").substr(0, std::to_string(pages).size()),
              std::to_string(pages));
    EXPECT_EQ(Walk(".1.3.6.1.2.1.25.3.3.1.1").size(),
              static_cast<size_t>(sysconf(_SC_NPROCESSORS_ONLN)));
    EXPECT_FALSE(Walk(".1.3.6.1.2.1.25.2.3.1.3").empty());
}

TEST_F(ServedModules, MakeOneWalkThatRisesAndEnds)
{
    Outcome walk = agent.Ask("snmpbulkwalk", "2c", "public", {".1.3"}, {"-On"});
    EXPECT_EQ(walk.status, 0);
    EXPECT_EQ(walk.output.find("not increasing"), walk.output.npos);
    for (const char* object : {".1.3.6.1.2.1.1.1.0", ".1.3.6.1.2.1.2.1.0", ".1.3.6.1.2.1.11.1.0",
                               ".1.3.6.1.2.1.25.1.1.0", ".1.3.6.1.6.3.16.1.5.1.0"})
        EXPECT_NE(walk.output.find(std::string(object) + " = "), walk.output.npos) << object;
}

// Alarms read in the name of the community that the file says.
TEST(ServedAlarms, SampleWhatTheirCommunityMaySee)
{
    const std::string communities = "agentAddress = \"udp:127.0.0.1:0\"\n"
                                    "[[community]]\nname = \"boss\"\nwrite = \"everything\"\n"
                                    "read = \"everything\"\n"
                                    "[[community]]\nname = \"system\"\nread = \"systemonly\"\n";
    const std::string alarm = ".1.3.6.1.2.1.16.3.1.1.";
    auto setVariable = [&](const std::string& first, const char* variable) {
        TempDir directory;
        ConfigFile file(first + communities);
        ConfiguredAgent agent(directory.File("store.db"), file);
        EXPECT_TRUE(agent.IsReady()) << agent.FirstLine();
        return agent.Ask(
            "snmpset", "2c", "boss",
            {alarm + "12.7", "i", "2", alarm + "3.7", "o", variable, alarm + "2.7", "i", "1"});
    };
    const char* upTime = ".1.3.6.1.2.1.1.3.0";
    const char* packets = ".1.3.6.1.2.1.11.1.0";
    const std::string named = "alarmCommunity = \"system\"\n";
    Outcome seen = setVariable(named, upTime);
    EXPECT_EQ(seen.status, 0) << seen.output;
    Outcome hidden = setVariable(named, packets);
    EXPECT_NE(hidden.output.find("wrongValue"), hidden.output.npos) << hidden.output;
    Outcome nobodys = setVariable("", upTime);
    EXPECT_NE(nobodys.output.find("wrongValue"), nobodys.output.npos) << nobodys.output;
}

} // namespace
