// Everything at once.
#pragma once

#include <vkmibh/agents.h>
#include <vkmibh/base.h>
#include <vkmibh/cli.h>
#include <vkmibh/cmdhandler.h>
#include <vkmibh/cmdline.h>
#include <vkmibh/console.h>
#include <vkmibh/containers.h>
#include <vkmibh/filter.h>
#include <vkmibh/handler.h>
#include <vkmibh/impl.h>
#include <vkmibh/maparray.h>
#include <vkmibh/mibinfo.h>
#include <vkmibh/rqmap.h>
#include <vkmibh/subtree.h>
#include <vkmibh/system.h>
#include <vkmibh/timer.h>
#include <vkmibh/transactions.h>
#include <vkmibh/traps.h>
#include <vkmibh/tree.h>
#include <vkmibh/values.h>
