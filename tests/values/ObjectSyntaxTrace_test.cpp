// Tagged value: the labels that it gives to the trace hook. This program has
// the hook of its own below instead of the library's empty one.
#include <cstdarg>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>
#include <vkmibh/values.h>

namespace {

std::vector<std::string>* g_labels = nullptr;

} // namespace

namespace VLK {

void VKDbgModuleTraceClass(int traceClass, const char* format, ...)
{
    if (g_labels && traceClass == 0x10016)
        g_labels->push_back(format);
}

} // namespace VLK

using namespace VLK;
using testing::ElementsAre;

TEST(ObjectSyntaxTrace, EveryCallHasItsLabel)
{
    std::vector<std::string> labels;
    BObjectSyntax other;
    alignas(BObjectSyntax) unsigned char storage[sizeof(BObjectSyntax)];
    g_labels = &labels;
    BObjectSyntax* value = new (storage) BObjectSyntax(eAsnInteger);
    EXPECT_THAT(labels, ElementsAre("constructor 1"));
    labels.clear();
    value->~BObjectSyntax();
    EXPECT_THAT(labels, ElementsAre("destructor", "FreeResources"));
    labels.clear();
    value = new (storage) BObjectSyntax(other);
    EXPECT_THAT(labels, ElementsAre("copy constructor", "Assign", "FreeResources"));
    labels.clear();
    *value = other;
    EXPECT_THAT(labels, ElementsAre("Assign", "FreeResources"));
    labels.clear();
    value->Assign(*value);
    EXPECT_THAT(labels, ElementsAre("Assign"));
    labels.clear();
    value->SetInt(1);
    EXPECT_THAT(labels, ElementsAre("FreeResources"));
    g_labels = nullptr;
    value->~BObjectSyntax();
}
