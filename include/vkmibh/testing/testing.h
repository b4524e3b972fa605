// All of the testing kit, which needs no test framework: what looks at a module
// returns what is wrong as text, a line for each, empty when nothing is.
//
//   EXPECT_EQ(CheckMaps(module), "");                            // GoogleTest
//   if (std::string wrong = CheckMaps(module); !wrong.empty()) ... // anything else
//
// CMake: find_package(VKMibH COMPONENTS Testing), target VKMibH::Testing.
#pragma once

#include <vkmibh/testing/maps.h>
#include <vkmibh/testing/module.h>
#include <vkmibh/testing/recorder.h>
#include <vkmibh/testing/requests.h>
#include <vkmibh/testing/walks.h>
