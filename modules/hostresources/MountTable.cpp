#include "modules/hostresources/MountTable.h"

#include "modules/hostresources/ProcText.h"

#include <algorithm>
#include <iterator>

namespace VLK::modules {

namespace {

bool IsOctal(char c) { return c >= '0' && c <= '7'; }

// Blanks and what else would not fit into a line stand there as "\\040" and the like.
std::string Unescaped(std::string_view text)
{
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && IsOctal(text[i + 1]) &&
            IsOctal(text[i + 2]) && IsOctal(text[i + 3])) {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 +
                                       (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

// "36 35 98:0 /root /mnt rw,noatime master:1 - ext4 /dev/sda1 rw": before the dash
// stand any number of optional fields.
bool ParseMount(std::string_view line, SMount& mount)
{
    CProcText text(line);
    std::string_view word, mountPoint, type, source;
    unsigned parent = 0;
    if (!text.TakeNumber(mount.id) || !text.TakeNumber(parent) || !text.TakeNumber(mount.major) ||
        !text.Take(':') || !text.TakeNumber(mount.minor) || !text.TakeWord(word) ||
        !text.TakeWord(mountPoint) || !text.TakeWord(word))
        return false;
    while (word != "-") {
        if (!text.TakeWord(word))
            return false;
    }
    if (mountPoint[0] != '/' || !text.TakeWord(type) || !text.TakeWord(source))
        return false;
    mount.mountPoint = Unescaped(mountPoint);
    mount.type = Unescaped(type);
    mount.source = Unescaped(source);
    return true;
}

template <size_t n>
bool IsAmong(const char* const (&names)[n], const std::string& name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool IsDisk(const SMount& mount)
{
    // Of block devices, but answered by a process or by other hosts.
    static constexpr const char* kAsksOthers[] = {"fuseblk", "gfs2", "ocfs2"};
    // Of disks, but without a device number of their own.
    static constexpr const char* kOfManyDisks[] = {"btrfs", "zfs", "bcachefs"};
    if (mount.major != 0)
        return !IsAmong(kAsksOthers, mount.type);
    // A container's root; anywhere else it only shows again what is on a disk.
    return IsAmong(kOfManyDisks, mount.type) ||
           (mount.type == "overlay" && mount.mountPoint == "/");
}

// Whether a path may lead through it. What is not known is not trusted.
bool Answers(const SMount& mount)
{
    static constexpr const char* kInMemory[] = {"tmpfs",  "ramfs",   "devtmpfs",
                                                "rootfs", "overlay", "autofs"};
    return IsDisk(mount) || IsAmong(kInMemory, mount.type);
}

bool IsOnTheWay(const std::string& directory, const std::string& path)
{
    if (directory == "/")
        return true;
    return path.compare(0, directory.size(), directory) == 0 &&
           (path.size() == directory.size() || path[directory.size()] == '/');
}

} // namespace

std::vector<SMount> ParseMounts(std::string_view mountInfo)
{
    std::vector<SMount> mounts;
    CProcText text(mountInfo);
    for (std::string_view line; text.TakeLine(line);) {
        SMount mount;
        if (ParseMount(line, mount))
            mounts.push_back(std::move(mount));
    }
    return mounts;
}

std::vector<SMount> LocalDisks(const std::vector<SMount>& mounts)
{
    std::vector<const SMount*> mistrusted;
    for (const SMount& mount : mounts) {
        if (!Answers(mount))
            mistrusted.push_back(&mount);
    }
    std::vector<SMount> disks;
    for (const SMount& mount : mounts) {
        const auto hides = [&](const SMount* other) {
            return IsOnTheWay(other->mountPoint, mount.mountPoint);
        };
        if (IsDisk(mount) && std::none_of(mistrusted.begin(), mistrusted.end(), hides))
            disks.push_back(mount);
    }
    return disks;
}

} // namespace VLK::modules
