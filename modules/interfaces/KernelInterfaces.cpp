#include "modules/interfaces/KernelInterfaces.h"

#include "modules/interfaces/LinkMessage.h"
#include "modules/interfaces/LinkSocket.h"

#include <net/if.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <libmnl/libmnl.h>
#include <linux/ethtool.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <system_error>

namespace VLK::modules {

namespace {

constexpr int kTries = 20;
constexpr std::uint64_t kMegabit = 1000000;

// The settings of a link, with room for the three masks behind them.
union USettings {
    ethtool_link_settings head;
    char room[sizeof(ethtool_link_settings) + sizeof(__u32) * 3 * 127];
};

// Asks for the speed of one interface after the other.
class CSpeeds {
public:
    explicit CSpeeds(int descriptor) : m_descriptor(descriptor) {}

    // None when it is unknown. A device that does not know of any has none: 0.
    std::optional<std::uint64_t> Of(const std::string& name)
    {
        USettings settings{};
        if (!Ask(name, settings))
            return errno == EOPNOTSUPP ? std::optional<std::uint64_t>(0) : std::nullopt;
        if (settings.head.speed == static_cast<__u32>(SPEED_UNKNOWN))
            return std::nullopt;
        return settings.head.speed * kMegabit;
    }

private:
    // The kernel tells the size of its masks to those that ask with another one.
    bool Ask(const std::string& name, USettings& settings)
    {
        if (!AskOnce(name, settings))
            return false;
        if (settings.head.link_mode_masks_nwords >= 0)
            return true;
        m_maskWords = static_cast<__s8>(-settings.head.link_mode_masks_nwords);
        return AskOnce(name, settings) && settings.head.link_mode_masks_nwords == m_maskWords;
    }

    bool AskOnce(const std::string& name, USettings& settings)
    {
        ifreq request{};
        name.copy(request.ifr_name, sizeof request.ifr_name - 1);
        request.ifr_data = reinterpret_cast<char*>(&settings);
        settings.head.cmd = ETHTOOL_GLINKSETTINGS;
        settings.head.link_mode_masks_nwords = m_maskWords;
        return ioctl(m_descriptor, SIOCETHTOOL, &request) == 0;
    }

    const int m_descriptor;
    __s8 m_maskWords = 0;
};

void AskForLinks(CLinkSocket& socket)
{
    char buffer[MNL_NLMSG_HDRLEN + MNL_ALIGN(sizeof(ifinfomsg))];
    nlmsghdr* const request = mnl_nlmsg_put_header(buffer);
    request->nlmsg_type = RTM_GETLINK;
    request->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    mnl_nlmsg_put_extra_header(request, sizeof(ifinfomsg));
    socket.Send(*request);
}

// Both ends of an answer start with an error, 0 or negative.
int ErrorIn(const nlmsghdr& message)
{
    int error = -EBADMSG;
    if (mnl_nlmsg_get_payload_len(&message) >= sizeof error)
        std::memcpy(&error, mnl_nlmsg_get_payload(&message), sizeof error);
    return -error;
}

bool IsEnd(const nlmsghdr& message)
{
    return message.nlmsg_type == NLMSG_DONE || message.nlmsg_type == NLMSG_ERROR;
}

// 0, or what went wrong; EINTR when the list changed meanwhile.
int TakeAnswer(CLinkSocket& socket, std::vector<SInterface>& links)
{
    int error = 0;
    bool isMore = true;
    while (isMore) {
        if (!socket.Receive())
            return errno;
        isMore = socket.ForEach([&](const nlmsghdr& message) {
            if (message.nlmsg_flags & NLM_F_DUMP_INTR)
                error = EINTR;
            else if (IsEnd(message))
                error = ErrorIn(message);
            else if (std::optional<SInterface> link = InterfaceIn(message))
                links.push_back(std::move(*link));
            return error == 0 && !IsEnd(message);
        });
    }
    return error;
}

bool Precedes(const SInterface& a, const SInterface& b) { return a.index < b.index; }
bool HasIndexOf(const SInterface& a, const SInterface& b) { return a.index == b.index; }

} // namespace

std::uint64_t HostUptime()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
}

std::vector<SInterface> CKernelInterfaces::Read()
{
    int error = EINTR;
    for (int i = 0; error == EINTR && i < kTries; ++i) {
        // A new one for each try: the rest of an answer goes with its socket.
        CLinkSocket socket(0, CLinkSocket::eReadingWaits);
        AskForLinks(socket);
        std::vector<SInterface> links;
        error = TakeAnswer(socket, links);
        if (error != 0)
            continue;
        std::sort(links.begin(), links.end(), Precedes);
        links.erase(std::unique(links.begin(), links.end(), HasIndexOf), links.end());
        CSpeeds speeds(socket.Descriptor());
        for (SInterface& link : links)
            link.speed = speeds.Of(link.name);
        return links;
    }
    throw std::system_error(error, std::generic_category(), "rtnetlink");
}

} // namespace VLK::modules
