// Which mounts are disks that can be asked without waiting for anybody.
#include "modules/hostresources/MountTable.h"

#include <gtest/gtest.h>

using namespace VLK::modules;

namespace {

using Texts = std::vector<std::string>;

// A line of mountinfo.
std::string Line(const std::string& device, const std::string& mountPoint, const std::string& type)
{
    return "36 35 " + device + " / " + mountPoint + " rw,noatime shared:1 - " + type +
           " source rw\n";
}

Texts Disks(const std::string& mountInfo)
{
    Texts mountPoints;
    for (const SMount& mount : LocalDisks(ParseMounts(mountInfo)))
        mountPoints.push_back(mount.mountPoint);
    return mountPoints;
}

const std::string kRoot = Line("8:1", "/", "ext4");

} // namespace

TEST(MountTable, ALineHasAllItsFields)
{
    const std::vector<SMount> mounts =
        ParseMounts("4294967297 35 259:12 /sub /mnt/x rw,noatime master:1 propagate_from:2 "
                    "unbindable - ext4 /dev/nvme0n1p1 rw,errors=continue\n");
    ASSERT_EQ(mounts.size(), 1u);
    EXPECT_EQ(mounts[0].id, 4294967297u);
    EXPECT_EQ(mounts[0].major, 259u);
    EXPECT_EQ(mounts[0].minor, 12u);
    EXPECT_EQ(mounts[0].mountPoint, "/mnt/x");
    EXPECT_EQ(mounts[0].type, "ext4");
    EXPECT_EQ(mounts[0].source, "/dev/nvme0n1p1");
}

TEST(MountTable, OctalEscapesAreUndone)
{
    const std::vector<std::pair<const char*, const char*>> names = {
        {"/a\\040b", "/a b"},   {"/\\011\\012\\134", "/\t\n\\"}, {"/\\134040", "/\\040"},
        {"/\\043x", "/#x"},     {"/\\303\\244", "/\xc3\xa4"},    {"/end\\040", "/end "},
        {"/\\04", "/\\04"},     {"/\\9999", "/\\9999"},          {"/\\", "/\\"},
        {"/\\0\\040", "/\\0 "}, {"/x//deleted", "/x//deleted"}};
    for (const auto& [written, meant] : names) {
        const std::vector<SMount> mounts = ParseMounts(Line("8:1", written, "ext4"));
        ASSERT_EQ(mounts.size(), 1u) << written;
        EXPECT_EQ(mounts[0].mountPoint, meant);
    }
}

TEST(MountTable, LinesThatAreNoMountsArePassedOver)
{
    for (const char* line : {"", "\n", "x", "1 2\n", "1 2 8:1 / / rw\n", "1 2 8:1 / / rw -\n",
                             "1 2 8:1 / / rw - ext4\n", "1 2 8:1 / / rw shared:1 ext4 source rw\n",
                             "x 2 8:1 / / rw - ext4 s rw\n", "1 x 8:1 / / rw - ext4 s rw\n",
                             "1 2 8 / / rw - ext4 s rw\n", "1 2 8-1 / / rw - ext4 s rw\n",
                             "1 2 8: / / rw - ext4 s rw\n", "1 2 -8:1 / / rw - ext4 s rw\n",
                             "1 2 8:1 / relative rw - ext4 s rw\n"}) {
        EXPECT_TRUE(ParseMounts(line).empty()) << line;
        EXPECT_EQ(Disks(line + ("\n" + kRoot)), Texts{"/"}) << line;
    }
    EXPECT_EQ(ParseMounts("1 2 8:1 / / rw - ext4 s").size(), 1u) << "no end of line";
}

TEST(MountTable, BlockDevicesAreDisks)
{
    EXPECT_EQ(Disks(kRoot + Line("259:3", "/home", "xfs") + Line("7:0", "/loop", "squashfs") +
                    Line("253:0", "/lvm", "some_new_fs")),
              (Texts{"/", "/home", "/loop", "/lvm"}));
}

TEST(MountTable, FileSystemsOfManyDisksAreDisksToo)
{
    EXPECT_EQ(Disks(kRoot + Line("0:40", "/b", "btrfs") + Line("0:41", "/z", "zfs") +
                    Line("0:42", "/c", "bcachefs")),
              (Texts{"/", "/b", "/z", "/c"}));
}

TEST(MountTable, PseudoFileSystemsAreNone)
{
    for (const char* type :
         {"proc",   "sysfs",      "devtmpfs",  "devpts",   "tmpfs",          "ramfs",
          "cgroup", "cgroup2",    "debugfs",   "tracefs",  "securityfs",     "pstore",
          "bpf",    "mqueue",     "hugetlbfs", "configfs", "fusectl",        "binfmt_misc",
          "autofs", "rpc_pipefs", "nsfs",      "efivarfs", "what_comes_next"})
        EXPECT_EQ(Disks(kRoot + Line("0:5", "/p", type)), Texts{"/"}) << type;
}

TEST(MountTable, AContainersRootIsADiskAndNoOtherOverlay)
{
    EXPECT_EQ(Disks(Line("0:50", "/", "overlay") + Line("0:51", "/merged", "overlay") +
                    Line("8:1", "/data", "ext4")),
              (Texts{"/", "/data"}));
}

TEST(MountTable, WhatAsksOthersIsLeftOut)
{
    for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "afs", "ceph", "9p", "virtiofs",
                             "lustre", "fuse.sshfs", "fuse.gvfsd-fuse", "fuse", "glusterfs"})
        EXPECT_EQ(Disks(kRoot + Line("0:60", "/net", type)), Texts{"/"}) << type;
    for (const char* type : {"fuseblk", "gfs2", "ocfs2"})
        EXPECT_EQ(Disks(kRoot + Line("8:9", "/net", type)), Texts{"/"}) << type;
}

TEST(MountTable, NoDiskIsAskedThroughAHostThatMayNotAnswer)
{
    EXPECT_EQ(Disks(kRoot + Line("0:60", "/net", "nfs") + Line("8:2", "/net/disk", "ext4") +
                    Line("8:3", "/net/a/b", "ext4") + Line("8:4", "/network", "ext4") +
                    Line("8:5", "/ne", "ext4")),
              (Texts{"/", "/network", "/ne"}));
    EXPECT_EQ(Disks(kRoot + Line("8:2", "/net/disk", "ext4") + Line("0:60", "/net", "nfs")),
              Texts{"/"})
        << "mounted over it later";
    EXPECT_EQ(Disks(kRoot + Line("8:2", "/net", "ext4") + Line("0:60", "/net", "nfs")), Texts{"/"});
    EXPECT_EQ(Disks(Line("0:60", "/", "nfs") + Line("8:2", "/disk", "ext4")), Texts());
}

TEST(MountTable, WhatIsInMemoryIsNoObstacle)
{
    for (const char* type : {"tmpfs", "ramfs", "rootfs", "devtmpfs", "autofs", "overlay"})
        EXPECT_EQ(Disks(Line("0:5", "/", "rootfs") + Line("0:6", "/run", type) +
                        Line("8:2", "/run/media", "ext4")),
                  Texts{"/run/media"})
            << type;
    EXPECT_EQ(Disks(kRoot + Line("0:6", "/boot", "autofs") + Line("8:2", "/boot", "ext4")),
              (Texts{"/", "/boot"}));
}
