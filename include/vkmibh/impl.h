// The implementation framework: groups, scalars, tables and rows.
#pragma once

#include <vkmibh/implbase.h>
#include <vkmibh/maprows.h>
#include <vkmibh/rowstatus.h>
#include <vkmibh/scalars.h>
#include <vkmibh/tables.h>
