// The operator's console: command handlers, the parser of command lines, the
// engine.
#pragma once

#include <vkmibh/cli.h>
#include <vkmibh/cmdhandler.h>
#include <vkmibh/cmdline.h>
