// stats: what the agent has been asked, and what kept it waiting.
#include "host/verbs/VerbTexts.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace VLK::host {

namespace {

constexpr size_t kMostSlow = 10;

template <class... TValue>
std::string Format(const char* format, TValue... values)
{
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

void AddRequests(CLines& lines, const BRequestStats& stats)
{
    static const char* const kNames[eKinds] = {"get", "getnext", "getbulk", "set"};
    lines.push_back(Row("requests", Format("%12s %12s %12s", "SNMPv1", "SNMPv2c", "SNMPv3")));
    for (ERequestKind kind : {eKindGet, eKindGetNext, eKindGetBulk, eKindSet}) {
        std::string counts;
        for (int version = 0; version < BRequestStats::kVersions; ++version)
            counts += Format(version ? " %12llu" : "%12llu",
                             static_cast<unsigned long long>(stats.Requests(kind, version)));
        lines.push_back(Row(std::string("  ") + kNames[kind], counts));
    }
    lines.push_back(Row("unanswered", std::to_string(stats.Unanswered()) +
                                          " of an unknown community, or one not answered there"));
}

std::string ErrorsText(const BRequestStats& stats)
{
    std::string text;
    for (int status = 1; status < BRequestStats::kStatuses; ++status) {
        if (const uint64_t count = stats.Statuses(status))
            text += (text.empty() ? "" : ", ") + std::string(LabelErrorStatus(status)) + " " +
                    std::to_string(count);
    }
    return text.empty() ? "none" : text;
}

void AddLoad(CLines& lines, const SEngineLoad& load, const SAgentTotals& totals)
{
    lines.push_back(
        Row("sets", Format("%s at work, %u of %u waiting for it", load.isSetAtWork ? "one" : "none",
                           load.waitingSets, load.mostWaitingSets)));
    lines.push_back(
        Row("threads", Format("%u of %u held by slow requests", load.late, load.workers)));
    lines.push_back(
        Row("dropped", std::to_string(totals.overload) + " requests for want of a thread"));
}

std::string NotificationsText(const SAgentTotals& totals)
{
    if (totals.receivers == 0)
        return "no receivers";
    std::string text =
        std::to_string(totals.receivers) + (totals.receivers == 1 ? " receiver" : " receivers");
    const std::pair<const char*, uint64_t> counts[] = {
        {"sent", totals.sent},
        {"failed", totals.failed},
        {"outside the notify view", totals.notShown},
        {"dropped for want of room", totals.overflowed},
        {"acknowledged", totals.acknowledged},
        {"retried", totals.retried},
        {"given up", totals.givenUp}};
    for (const auto& [name, count] : counts)
        text += std::string(", ") + std::to_string(count) + " " + name;
    return text;
}

double Milliseconds(std::chrono::nanoseconds duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

std::string RegionText(const SRegion& region)
{
    if (region.isSave)
        return "none: saving what SETs have changed";
    return TextOf(region.oid.ToString()) + " of " + region.module;
}

void AddSlow(CLines& lines, const BRegions& regions)
{
    std::vector<SRegion> slow = regions.Below(BObjectIdentifier());
    slow.erase(std::remove_if(slow.begin(), slow.end(),
                              [](const SRegion& region) { return region.slowness.requests == 0; }),
               slow.end());
    std::stable_sort(slow.begin(), slow.end(), [](const SRegion& a, const SRegion& b) {
        return a.slowness.total > b.slowness.total;
    });
    if (slow.empty()) {
        lines.push_back(Row("slow", "no module has taken more than a millisecond for a request"));
        return;
    }
    lines.push_back(Row("slow", "modules that took more than a millisecond for a request"));
    lines.push_back(Format("%10s %12s %12s  %-19s  %s", "requests", "total ms", "worst ms",
                           "worst at", "region"));
    for (size_t i = 0; i < slow.size() && i < kMostSlow; ++i) {
        const SSlowness& sum = slow[i].slowness;
        lines.push_back(Format("%10llu %12.1f %12.1f  %-19s  ",
                               static_cast<unsigned long long>(sum.requests),
                               Milliseconds(sum.total), Milliseconds(sum.worst),
                               TimeText(sum.worstAt).c_str()) +
                        RegionText(slow[i]));
    }
    if (slow.size() > kMostSlow)
        lines.push_back(Format("  and %zu more", slow.size() - kMostSlow));
}

} // namespace

std::string TimeText(std::chrono::system_clock::time_point at)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(at);
    std::tm local = {};
    localtime_r(&seconds, &local);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local));
}

std::string Row(const std::string& name, const std::string& text)
{
    constexpr size_t kColumn = 13;
    return name + std::string(name.size() < kColumn ? kColumn - name.size() : 1, ' ') + text;
}

CLines StatsLines(const BVerbs::SSources& sources)
{
    CLines lines;
    const SAgentTotals totals = sources.totals();
    AddRequests(lines, sources.requests);
    lines.push_back(Row("errors", ErrorsText(sources.requests)));
    AddLoad(lines, sources.load(), totals);
    lines.push_back(Row("notified", NotificationsText(totals)));
    AddSlow(lines, sources.regions);
    return lines;
}

} // namespace VLK::host
