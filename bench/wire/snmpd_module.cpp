// The same content for Debian's snmpd, as a plug-in that it loads (dlmod): tables in the
// agent library's sorted container, scalars by its watcher helper.
#include "bench/wire/Content.h"

extern "C" {
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/agent/table_container.h>
#include <net-snmp/agent/watcher.h>
}

#include <initializer_list>
#include <iterator>
#include <vector>

namespace {

// The container's index comes first.
struct SRow {
    netsnmp_index index;
    oid arc;
    long value;
};

std::vector<oid> Below(std::initializer_list<unsigned> arcs)
{
    std::vector<oid> name(std::begin(wire::kBase), std::end(wire::kBase));
    name.insert(name.end(), arcs.begin(), arcs.end());
    return name;
}

int GetRow(netsnmp_mib_handler*, netsnmp_handler_registration*,
           netsnmp_agent_request_info* information, netsnmp_request_info* requests)
{
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        if (request->processed)
            continue;
        auto* row = static_cast<SRow*>(netsnmp_container_table_extract_context(request));
        if (row)
            snmp_set_var_typed_integer(request->requestvb, ASN_INTEGER, row->value);
        else
            netsnmp_set_request_error(information, request, SNMP_NOSUCHINSTANCE);
    }
    return SNMP_ERR_NOERROR;
}

void AddTable(unsigned table)
{
    const std::vector<oid> name = Below({1, table});
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        "wireTable", GetRow, name.data(), name.size(), HANDLER_CAN_RONLY);
    auto* columns = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    netsnmp_container* rows = netsnmp_container_find("wireTable:table_container");
    if (!registration || !columns || !rows)
        std::abort();
    netsnmp_table_helper_add_indexes(columns, ASN_UNSIGNED, 0);
    columns->min_column = 1;
    columns->max_column = 1;
    if (netsnmp_container_table_register(registration, columns, rows,
                                         TABLE_CONTAINER_KEY_NETSNMP_INDEX) != SNMPERR_SUCCESS)
        std::abort();
    // Theirs for as long as the process lives.
    auto* all = new std::vector<SRow>(wire::RowsOf(table));
    unsigned arc = 0;
    for (SRow& row : *all) {
        arc += wire::kIndexStep;
        row.arc = arc;
        row.value = static_cast<long>(arc);
        row.index.len = 1;
        row.index.oids = &row.arc;
        CONTAINER_INSERT(rows, &row);
    }
}

void AddScalar(const std::vector<oid>& name, int value, int access)
{
    auto* number = new long(value); // as the agent library has what a SET brings
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        "wireScalar", nullptr, name.data(), name.size(), access);
    if (!registration ||
        netsnmp_register_watched_scalar(
            registration, netsnmp_create_watcher_info(number, sizeof *number, ASN_INTEGER,
                                                      WATCHER_FIXED_SIZE)) != MIB_REGISTERED_OK)
        std::abort();
}

} // namespace

// dlmod calls it by this name.
extern "C" __attribute__((visibility("default"))) void init_wire()
{
    if (wire::Serves("tables")) {
        for (unsigned k = wire::kSmallestTable; k <= wire::kLargestTable; ++k)
            AddTable(k);
        AddScalar(Below({3}), 0, HANDLER_CAN_RWRITE);
    }
    if (wire::Serves("registrations")) {
        for (unsigned i = 1; i <= wire::kRegistrations; ++i)
            AddScalar(Below({2, i}), static_cast<int>(i), HANDLER_CAN_RONLY);
    }
}
