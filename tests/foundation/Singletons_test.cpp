#include "tests/support/VtableSlot.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <vkmibh/base.h>

namespace VLK {
namespace {

class Single : public BSingleton {
public:
    Single(std::string& log, char name, EShutdownOrder order = eShutdownInTurn)
        : BSingleton(order), m_log(log), m_name(name)
    {
    }
    ~Single() override { m_log += m_name; }
    void Destroy() override { delete this; }

private:
    std::string& m_log;
    const char m_name;
};

TEST(Singletons, AreDestroyedInReverseOrderOfRegistration)
{
    std::string log;
    for (char name : {'a', 'b', 'c'})
        new Single(log, name);
    BSingletons::DestroyAll();
    EXPECT_EQ(log, "cba");
}

TEST(Singletons, TheTimerGoesBeforeAllOthers)
{
    std::string log;
    new Single(log, 't', eShutdownFirst);
    new Single(log, 'a');
    new Single(log, 'b');
    BSingletons::DestroyAll();
    EXPECT_EQ(log, "tba");
}

TEST(Singletons, SurvivesOneThatWasDestroyedByHand)
{
    std::string log;
    new Single(log, 'a');
    BSingleton* const b = new Single(log, 'b');
    new Single(log, 'c');
    b->Destroy();
    EXPECT_EQ(log, "b");
    BSingletons::DestroyAll();
    EXPECT_EQ(log, "bca");
    BSingletons::DestroyAll();
    EXPECT_EQ(log, "bca");
}

TEST(Singletons, SecondRegistrationKeepsThePlace)
{
    std::string log;
    BSingleton* const a = new Single(log, 'a');
    new Single(log, 'b');
    BSingletons::Register(a);
    BSingletons::Register(a, eShutdownFirst);
    BSingletons::Register(nullptr);
    BSingletons::DestroyAll();
    EXPECT_EQ(log, "ba");
}

TEST(Singletons, UnregisteredOnesAreLeftAlone)
{
    std::string log;
    {
        Single onStack(log, 'a');
        BSingletons::Unregister(&onStack);
        BSingletons::Unregister(&onStack);
        BSingletons::DestroyAll();
        EXPECT_EQ(log, "");
    }
    EXPECT_EQ(log, "a");
}

TEST(Singletons, DestroyMayDestroyOthers)
{
    struct Owner : Single {
        Owner(std::string& log, BSingleton* owned) : Single(log, 'o'), m_owned(owned) {}
        void Destroy() override
        {
            m_owned->Destroy();
            delete this;
        }
        BSingleton* const m_owned;
    };
    std::string log;
    new Single(log, 'x');
    new Owner(log, new Single(log, 'a'));
    BSingletons::DestroyAll();
    EXPECT_EQ(log, "aox");
}

TEST(Singletons, VirtualsKeepTheirSlots) { EXPECT_EQ(VtableSlot(&BSingleton::Destroy), 2); }

// The thread that ends it is the only one.
[[noreturn]] void EndProcess(int status) { std::exit(status); } // NOLINT(concurrency-mt-unsafe)

class Announcing : public BSingleton {
public:
    ~Announcing() override { std::fputs("destroyed by itself\n", stderr); }
    void Destroy() override { delete this; }
};

TEST(SingletonsDeathTest, AreDestroyedAtTheEndOfTheProcess)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            new Announcing;
            EndProcess(0);
        },
        testing::ExitedWithCode(0), "destroyed by itself");
}

TEST(SingletonsDeathTest, AForkedChildLeavesThemAlone)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            struct Silent : BSingleton {
                explicit Silent(pid_t p) : parent(p) {}
                void Destroy() override { _exit(getpid() == parent ? 7 : 8); }
                const pid_t parent;
            };
            new Silent(getpid());
            const pid_t child = fork();
            if (child == 0)
                EndProcess(3);
            int status = 0;
            waitpid(child, &status, 0);
            if (WEXITSTATUS(status) != 3)
                _exit(1);
            EndProcess(0); // ends with 7: the parent's own
        },
        testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace VLK
