// mirror: port and VLAN mirroring groups and their sources.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/mirror.h"
#include "services/mirrorGroup.h"
#include "services/mirrorIf.h"
#include "services/mirrorIfMac.h"
#include "services/mirrorVlan.h"
#include "services/mirrorVlanMac.h"

#include <cstddef>
#include <cstdio>

namespace {

#define MIRROR_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 2611

constexpr FwEntry kScalars = fwScalars("mirror", {MIRROR_ROOT, 1}, FW_SCALAR_OPS(mirror));

constexpr FwEntry kGroupEntry = fwTable("mirrorGroup", {MIRROR_ROOT, 2, 1}, FW_TABLE_OPS(mirrorGroup))
                                    .intIndex("mirror:mirrorGroupIndex")
                                    .buffer(2000);

constexpr FwEntry kIfEntry =
    fwTable("mirrorIf", {MIRROR_ROOT, 3, 1}, FW_TABLE_OPS(mirrorIf)).intIndex("mirror:mirrorIfIndex").buffer(2);

constexpr FwEntry kVlanEntry =
    fwTable("mirrorVlan", {MIRROR_ROOT, 4, 1}, FW_TABLE_OPS(mirrorVlan)).intIndex("mirror:mirrorVlanVid");

// Interface or VLAN, MAC address, mask: 8 sub-ids, a 12-byte key record.
constexpr FwEntry kIfMacEntry = fwTable("mirrorIfMac", {MIRROR_ROOT, 5, 1}, FW_TABLE_OPS(mirrorIfMac))
                                    .key(sizeof(MirrorIfMacKey))
                                    .index(fwIdxInt("mirror:mirrorIfMacIf", offsetof(MirrorIfMacKey, ifIndex)))
                                    .index(fwIdxMac("mirror:mirrorIfMacAddr", offsetof(MirrorIfMacKey, macAddress)))
                                    .index(fwIdxInt("mirror:mirrorIfMacMask", offsetof(MirrorIfMacKey, mask), 2));

constexpr FwEntry kVlanMacEntry =
    fwTable("mirrorVlanMac", {MIRROR_ROOT, 6, 1}, FW_TABLE_OPS(mirrorVlanMac))
        .key(sizeof(MirrorVlanMacKey))
        .index(fwIdxInt("mirror:mirrorVlanMacVid", offsetof(MirrorVlanMacKey, vid)))
        .index(fwIdxMac("mirror:mirrorVlanMacAddr", offsetof(MirrorVlanMacKey, macAddress)))
        .index(fwIdxInt("mirror:mirrorVlanMacMask", offsetof(MirrorVlanMacKey, mask), 2));

constexpr FwObject kObjects[] = {
    // Capabilities of the mirroring feature.
    fwObject(&kScalars, 0, 1, "mirror:mirrorGenMaxGroup").gauge().ro().catalogued(1, 16).attr(1),
    fwObject(&kScalars, 1, 2, "mirror:mirrorGenCapSupport").octets(1).ro().attr(3),
    fwObject(&kScalars, 2, 3, "mirror:mirrorGenIfCapSupport").octets(1).ro().attr(5),
    fwObject(&kScalars, 3, 4, "mirror:mirrorGenIfMacCapSupport").octets(1).ro().attr(7),
    fwObject(&kScalars, 4, 5, "mirror:mirrorGenVlanCapSupport").octets(1).ro().attr(6),
    fwObject(&kScalars, 5, 6, "mirror:mirrorGenVlanMacCapSupport").octets(1).ro().attr(4),
    fwObject(&kScalars, 6, 7, "mirror:mirrorGenSwVersion").octets(512).ro().attr(8),

    // mirrorGroupEntry
    fwObject(&kGroupEntry, 7, 1, "mirror:mirrorGroupIndex").integer().ro().catalogued(1, 16).indexOf(0),
    fwObject(&kGroupEntry, 8, 2, "mirror:mirrorGroupMirrorToPort").octets(2000).attr(1),
    fwObject(&kGroupEntry, 9, 3, "mirror:mirrorGroupVlan").gauge().attr(2).below(4095),
    fwObject(&kGroupEntry, 10, 4, "mirror:mirrorGroupTpId").gauge().attr(3).below(65536),
    fwObject(&kGroupEntry, 11, 5, "mirror:mirrorGroupStatus").entryStatus().attr(4),
    fwObject(&kGroupEntry, 12, 6, "mirror:mirrorGroupSrcIpAddr").octets(255).attr(6).maxLength(255).readWith(16),
    fwObject(&kGroupEntry, 13, 7, "mirror:mirrorGroupSrcIpType").integer().attr(7).range(1, 2),
    fwObject(&kGroupEntry, 14, 8, "mirror:mirrorGroupDestIpAddr").octets(16).attr(8).maxLength(16).readWith(16),
    // Reads and writes the attribute of mirrorGroupSrcIpType (deliberate: clients rely on it).
    fwObject(&kGroupEntry, 15, 9, "mirror:mirrorGroupDestIpType").integer().attr(7).range(1, 2),
    fwObject(&kGroupEntry, 16, 10, "mirror:mirrorGroupDscp").integer().attr(9),
    fwObject(&kGroupEntry, 17, 11, "mirror:mirrorGroupIpVlan").integer().attr(10),
    fwObject(&kGroupEntry, 18, 12, "mirror:mirrorGroupRefcnt").integer().ro().constant_(0),
    fwObject(&kGroupEntry, 19, 13, "mirror:mirrorGroupType").integer().attr(11).below(3),

    // mirrorIfEntry
    fwObject(&kIfEntry, 20, 1, "mirror:mirrorIfIndex").integer().ro().indexOf(0),
    fwObject(&kIfEntry, 21, 2, "mirror:mirrorIfStatus").entryStatus().attr(1),
    fwObject(&kIfEntry, 22, 3, "mirror:mirrorIfInGroupId").octets(2).attr(2),
    fwObject(&kIfEntry, 23, 4, "mirror:mirrorIfOutGroupId").octets(2).attr(3),

    // mirrorVlanEntry
    fwObject(&kVlanEntry, 24, 1, "mirror:mirrorVlanVid").integer().ro().indexOf(0),
    fwObject(&kVlanEntry, 25, 2, "mirror:mirrorVlanStatus").entryStatus().attr(1),
    fwObject(&kVlanEntry, 26, 3, "mirror:mirrorVlanInGroupId").gauge().attr(2).below(16),
    fwObject(&kVlanEntry, 27, 4, "mirror:mirrorVlanOutGroupId").gauge().attr(3).below(16),
    fwObject(&kVlanEntry, 28, 5, "mirror:mirrorVlanInEnable").integer().attr(4).range(1, 2),
    fwObject(&kVlanEntry, 29, 6, "mirror:mirrorVlanOutEnable").integer().attr(5).range(1, 2),

    // mirrorIfMacEntry
    fwObject(&kIfMacEntry, 30, 1, "mirror:mirrorIfMacIf").integer().ro().indexOf(0),
    fwObject(&kIfMacEntry, 31, 2, "mirror:mirrorIfMacAddr").macAddress().ro().indexOf(1),
    fwObject(&kIfMacEntry, 32, 3, "mirror:mirrorIfMacMask").integer().ro().catalogued(0, 48).indexOf(2),
    fwObject(&kIfMacEntry, 33, 4, "mirror:mirrorIfMacStatus").entryStatus().attr(1),
    fwObject(&kIfMacEntry, 34, 5, "mirror:mirrorIfMacInGroupId").gauge().attr(2).below(16),
    fwObject(&kIfMacEntry, 35, 6, "mirror:mirrorIfMacOutGroupId").gauge().attr(3).below(16),
    fwObject(&kIfMacEntry, 36, 7, "mirror:mirrorIfMacInEnable").integer().attr(4).range(1, 2),
    fwObject(&kIfMacEntry, 37, 8, "mirror:mirrorIfMacOutEnable").integer().attr(5).range(1, 2),

    // mirrorVlanMacEntry
    fwObject(&kVlanMacEntry, 38, 1, "mirror:mirrorVlanMacVid").integer().ro().indexOf(0),
    fwObject(&kVlanMacEntry, 39, 2, "mirror:mirrorVlanMacAddr").macAddress().ro().indexOf(1),
    fwObject(&kVlanMacEntry, 40, 3, "mirror:mirrorVlanMacMask").integer().ro().catalogued(0, 48).indexOf(2),
    fwObject(&kVlanMacEntry, 41, 4, "mirror:mirrorVlanMacStatus").entryStatus().attr(1),
    fwObject(&kVlanMacEntry, 42, 5, "mirror:mirrorVlanMacInGroupId").gauge().attr(2).below(16),
    fwObject(&kVlanMacEntry, 43, 6, "mirror:mirrorVlanMacOutGroupId").gauge().attr(3).below(16),
    fwObject(&kVlanMacEntry, 44, 7, "mirror:mirrorVlanMacInEnable").integer().attr(4).range(1, 2),
    fwObject(&kVlanMacEntry, 45, 8, "mirror:mirrorVlanMacOutEnable").integer().attr(5).range(1, 2),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 46, "mirror has 46 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int mirrorMibInit(void) {
  if (fwModuleRegister("mirror", 164, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "mirror");
    return -1;
  }
  return 0;
}
