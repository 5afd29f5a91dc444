// Module gating: the list of all modules, in their order of start-up, each
// behind its gate option. The store of options decides which parts of the
// catalogue exist on a device. A module not built yet has its place in the
// list with no init function: it registers nothing until its slot is filled.
#include "mdb/mdb_gate.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_modules.h"
#include "mdb/mdb_subsys.h"
#include "platform/logging.h"
#include "platform/sil.h"
#include "services/svc_device.h"

const MdbInitStep gMdbInitSequence[] = {
  // 1
    {MDB_GATE_OPEN, 0, {"mdb.qxcompatenable"}, {{"qxOpticalTransceiverMibInit", "qxopticaltransceiver", 0, nullptr}, {"qxFanMonitorMibInit", "qxfanmonitor", 0, nullptr}, {"qxPowerMonitorMibInit", "qxpowermonitor", 0, nullptr}, {"qxSwitchSystemMibInit", "qxswitchsystem", 0, nullptr}, {"qxSystemMibInit", "qxsystem", 0, nullptr}}},
  // 2
    {MDB_GATE_ALWAYS, 0, {}, {{"rfc1907MibInit", "rfc1907", 0, rfc1907MibInit}, {"rfc2571MibInit", "rfc2571", 0, rfc2571MibInit}, {"rfc2572MibInit", "rfc2572", 0, rfc2572MibInit}, {"rfc2573nMibInit", "rfc2573n", 145, rfc2573nMibInit}, {"rfc2573tMibInit", "rfc2573t", 145, rfc2573tMibInit}, {"rfc2574MibInit", "rfc2574", 145, rfc2574MibInit}, {"snmpMibInit", "snmp", 145, snmpMibInit}}},
  // 3
    {MDB_GATE_OPEN, 0, {"mdb.rfc2674penable"}, {{"rfc2674pMibInit", "rfc2674p", 0, nullptr}}},
  // 4
    {MDB_GATE_OPEN, 0, {"mdb.rfc2674qenable"}, {{"rfc2674qMibInit", "rfc2674q", 0, nullptr}}},
  // 5
    {MDB_GATE_OPEN, 0, {"mdb.rfc1493enable"}, {{"rfc1493BridgeMibInit", "rfc1493", 0, nullptr}}},
  // 6
    {MDB_GATE_OPEN, 0, {"mdb.etherlikeenable"}, {{"etherlikeMibinit", "etherlike", 0, etherlikeMibinit}}},
  // 7
    {MDB_GATE_OPEN, 0, {"ping.enable"}, {{"pingMibInit", "ping", 0, nullptr}}},
  // 8
    {MDB_GATE_ALWAYS, 0, {}, {{"rfc1213MibInit", "rfc1213", 0, rfc1213MibInit}, {"rfc2096MibInit", "rfc2096", 0, nullptr}, {"ipv4MibInit", "ipv4", 0, nullptr}, {"rfc2233MibInit", "rfc2233", 0, rfc2233MibInit}}},
  // 9
    {MDB_GATE_OPEN, 0, {"um.enable"}, {{"userMibInit", "um", 118, nullptr}}},
  // 10
    {MDB_GATE_OPEN, 0, {"clock.enable"}, {{"clockMibInit", "clock", 0, clockMibInit}}},
  // 11
    {MDB_GATE_OPEN, 0, {"devm.osimage.enable"}, {{"osimageMibInit", "osimage", 0, nullptr}}},
  // 12
    {MDB_GATE_OPEN, 0, {"syslog.enable"}, {{"syslogMibInit", "syslog", 136, nullptr}}},
  // 13
    {MDB_GATE_OPEN, 0, {"ssh.enable"}, {{"sshMibInit", "ssh", 0, nullptr}}},
  // 14
    {MDB_GATE_ALWAYS, 0, {}, {{"telnetMibInit", "telnet", 0, nullptr}, {"lineMibInit", "line", 0, nullptr}, {"cmdpriMibInit", "cmdpri", 0, nullptr}}},
  // 15
    {MDB_GATE_OPEN, 0, {"http.enable"}, {{"httpMibInit", "http", 0, nullptr}}},
  // 16
    {MDB_GATE_OPEN, 0, {"log.enable"}, {{"loggingMibInit", "logging", 0, nullptr}}},
  // 17
    {MDB_GATE_OPEN, 0, {"mgtacl.enable"}, {{"mgtaclMibInit", "mgtacl", 0, nullptr}}},
  // 18
    {MDB_GATE_ALWAYS, 0, {}, {{"subsysMibInit", "subsys", 0, nullptr}, {"slotMibInit", "slot", 0, nullptr}, {"cardMibInit", "card", 0, nullptr}}},
  // 19
    {MDB_GATE_OPEN, 0, {"devm.fan.enable"}, {{"fanMibInit", "fan", 239, nullptr}}},
  // 20
    {MDB_GATE_OPEN, 0, {"devm.power.enable"}, {{"powerMibInit", "power", 239, nullptr}}},
  // 21
    {MDB_GATE_OPEN, 0, {"devm.voltage.enable"}, {{"voltageMibInit", "voltage", 239, nullptr}}},
  // 22
    {MDB_GATE_OPEN, 0, {"devm.temperature.enable"}, {{"temperatureMibInit", "temperature", 239, nullptr}}},
  // 23
    {MDB_GATE_OPEN, 0, {"devm.cpu.enable"}, {{"cpuMibInit", "cpu", 239, nullptr}}},
  // 24
    {MDB_GATE_OPEN, 0, {"devm.memory.enable"}, {{"memoryMibInit", "memory", 239, nullptr}}},
  // 25
    {MDB_GATE_ALWAYS, 0, {}, {{"ifMibInit", "if", 0, ifMibInit}, {"methIfMibInit", "methif", 238, methIfMibInit}}},
  // 26
    {MDB_GATE_OPEN, 0, {"tgpif.ethif.enable"}, {{"ethIfMibInit", "ethif", 238, ethIfMibInit}}},
  // 27
    {MDB_GATE_OPEN, 0, {"tgpif.ethaggif.enable"}, {{"ethaggIfMibInit", "ethaggif", 169, ethaggIfMibInit}}},
  // 28
    {MDB_GATE_OPEN, 0, {"tgpif.ethsubif.enable"}, {{"ethsubifMibInit", "ethsubif", 0, ethsubifMibInit}}},
  // 29
    {MDB_GATE_CLOSED, 0, {"tgpif.ethsubifstatistics.enable"}, {{"ethSubifStatisticMibInit", "ethsubif_statistic", 0, ethSubifStatisticMibInit}}},
  // 30
    {MDB_GATE_OPEN, 0, {"tgpif.ethaggsubif.enable"}, {{"ethaggsubifMibInit", "ethaggsubif", 0, ethaggsubifMibInit}}},
  // 31
    {MDB_GATE_CLOSED, 0, {"tgpif.ethaggsubifstatistics.enable"}, {{"ethaggSubifStatisticMibInit", "ethaggsubif_statistic", 0, ethaggSubifStatisticMibInit}}},
  // 32
    {MDB_GATE_OPEN, 0, {"acl.enable"}, {{"aclMibInit", "acl", 165, nullptr}}},
  // 33
    {MDB_GATE_OPEN, 0, {"queue.enable"}, {{"queueMibInit", "queue", 218, nullptr}}},
  // 34
    {MDB_GATE_OPEN, 0, {"vct.enable"}, {{"vctMibInit", "vct", 228, nullptr}}},
  // 35
    {MDB_GATE_ALWAYS, 0, {}, {{"vlanMibInit", "vlan", 160, nullptr}}},
  // 36
    {MDB_GATE_OPEN, 0, {"protovlan.enable"}, {{"protoVlanMibInit", "protovlan", 163, nullptr}}},
  // 37
    {MDB_GATE_OPEN, 0, {"ipvlan.enable"}, {{"ipVlanMibInit", "ipvlan", 162, nullptr}}},
  // 38
    {MDB_GATE_OPEN, 0, {"macvlan.enable"}, {{"macVlanMibInit", "macvlan", 161, nullptr}}},
  // 39
    {MDB_GATE_OPEN, 0, {"linkflap.enable"}, {{"linkflapMibinit", "linkflap", 220, nullptr}}},
  // 40
    {MDB_GATE_OPEN, 0, {"igmpsnooping.enable"}, {{"igmpsnoopMibInit", "igmpsnoop", 21, nullptr}}},
  // 41
    {MDB_GATE_OPEN, 0, {"mldsnooping.enable"}, {{"mldsnoopMibInit", "mldsnoop", 22, nullptr}}},
  // 42
    {MDB_GATE_OPEN, 0, {"voicevlan.enable"}, {{"voicevlanMibInit", "voicevlan", 199, nullptr}}},
  // 43
    {MDB_GATE_OPEN, 0, {"portisolate.enable"}, {{"portisolateMibInit", "portisolate", 198, nullptr}}},
  // 44
    {MDB_GATE_OPEN, 0, {"pvlan.enable"}, {{"pvlanMibInit", "privatevlan", 233, nullptr}}},
  // 45
    {MDB_GATE_OPEN, 0, {"timerange.enable"}, {{"timerangeMibInit", "timerange", 0, nullptr}}},
  // 46
    {MDB_GATE_OPEN, 0, {"protectlink.enable"}, {{"protectlinkMibInit", "protectlink", 14, nullptr}}},
  // 47
    {MDB_GATE_OPEN, 0, {"monitorlink.enable"}, {{"monitorlinkMibInit", "monitorlink", 69, nullptr}}},
  // 48
    {MDB_GATE_OPEN, 0, {"counter.enable"}, {{"counterMibInit", "counter", 0, nullptr}}},
  // 49
    {MDB_GATE_ALWAYS, 0, {}, {{"deviceMibInit", "device", 0, nullptr}}},
  // 50
    {MDB_GATE_OPEN, 0, {"rmon.enable"}, {{"rmonMibInit", "rmon", 0, nullptr}}},
  // 51
    {MDB_GATE_OPEN, 0, {"aaa.enable"}, {{"aaaMibInit", "aaa", 222, nullptr}, {"rfc4668MibInit", "rfc4668", 222, nullptr}, {"rfc4670MibInit", "rfc4670", 222, nullptr}}},
  // 52
    {MDB_GATE_OPEN, 0, {"routepolicy.enable"}, {{"routepolicyMibInit", "routepolicy", 224, nullptr}}},
  // 53
    {MDB_GATE_OPEN, 0, {"nac.enable"}, {{"nacMibInit", "nac", 320, nullptr}}},
  // 54
    {MDB_GATE_OPEN, 0, {"hvs.enable"}, {{"hvsMibInit", "hvs", 27, nullptr}}},
  // 55
    {MDB_GATE_ALWAYS, 0, {}, {{"snmpTimerTrapMibInit", "snmptraptimer", 0, snmpTimerTrapMibInit}}},
  // 56
    {MDB_GATE_OPEN, 0, {"stp.enable"}, {{"stpMibInit", "stp", 4, nullptr}}},
  // 57
    {MDB_GATE_OPEN, 0, {"ospf.enable"}, {{"ospfv2MibInit", "ospfv2", 51, nullptr}}},
  // 58
    {MDB_GATE_OPEN, 0, {"rip.enable"}, {{"ripMibInit", "rip", 50, nullptr}, {"rfc1724MibInit", "rfc1724", 50, nullptr}}},
  // 59
    {MDB_GATE_OPEN, 0, {"bgp.enable"}, {{"rfc1657MibInit", "rfc1657", 52, nullptr}, {"rfc4273MibInit", "rfc4273", 52, nullptr}}},
  // 60
    {MDB_GATE_ALWAYS, 0, {}, {{"dhcpMibInit", "dhcp", 56, nullptr}}},
  // 61
    {MDB_GATE_OPEN, 0, {"dhcp.client.enable"}, {{"dhcpClientMibInit", "dhcpclient", 75, nullptr}}},
  // 62
    {MDB_GATE_OPEN, 0, {"pim.enable"}, {{"pimMibInit", "pim", 53, nullptr}}},
  // 63
    {MDB_GATE_OPEN, 0, {"nqa.enable"}, {{"nqaMibInit", "nqa", 235, nullptr}}},
  // 64
    {MDB_GATE_OPEN, 0, {"vrrp.enable"}, {{"vrrpv3Mibinit", "vrrp", 55, nullptr}}},
  // 65
    {MDB_GATE_OPEN, 0, {"ntp.enable"}, {{"ntpMibInit", "ntp", 60, nullptr}}},
  // 66
    {MDB_GATE_ALWAYS, 0, {}, {{"ftpMibInit", "ftp", 241, nullptr}}},
  // 67
    {MDB_GATE_OPEN, 0, {"1588v2.enable"}, {{"ptpMibInit", "ptp", 85, nullptr}}},
  // 68
    {MDB_GATE_OPEN, 0, {"l3vpn.enable"}, {{"l3vpnMibInit", "l3vpn", 178, nullptr}}},
  // 69
    {MDB_GATE_OPEN, 0, {"ztp.enable"}, {{"ztpMibInit", "ztp", 0, nullptr}}},
  // 70
    {MDB_GATE_OPEN, 0, {"vlanmapping.enable"}, {{"vlanmappingMibinit", "vlanmapping", 204, nullptr}}},
  // 71
    {MDB_GATE_OPEN, 0, {"arpantiattack.enable"}, {{"arpantiattackMibInit", "arpantiattack", 219, nullptr}}},
  // 72
    {MDB_GATE_OPEN, 0, {"lldp.enable"}, {{"lldpMibInit", "lldp", 7, nullptr}, {"lldpprivMibInit", "lldppriv", 7, nullptr}, {"lldpdot1MibInit", "lldpdot1", 7, nullptr}, {"lldpdot3MibInit", "lldpdot3", 7, nullptr}, {"lldpmedMibInit", "lldpmed", 7, nullptr}}},
  // 72 (nested)
    {MDB_GATE_OPEN, 1, {"lldp.vendortlv.enable"}, {{"lldpVendorMibInit", "lldpvendor", 7, nullptr}}},
  // 73
    {MDB_GATE_OPEN, 0, {"loopdetect.enable"}, {{"loopDetectMibInit", "loopbackdetect", 13, nullptr}}},
  // 74
    {MDB_GATE_OPEN, 0, {"dot3ah.enable"}, {{"dot3ahMibInit", "dot3ah", 3, nullptr}, {"rfc4878MibInit", "rfc4878", 3, nullptr}}},
  // 75
    {MDB_GATE_OPEN, 0, {"dhcpsnooping.enable"}, {{"dhcpSnoopMibInit", "dhcpsnoop", 23, nullptr}}},
  // 76
    {MDB_GATE_OPEN, 0, {"cfm.enable"}, {{"cfmMibInit", "cfm", 316, nullptr}}},
  // 77
    {MDB_GATE_OPEN, 0, {"aem.enable"}, {{"aemMibInit", "aem", 0, nullptr}}},
  // 78
    {MDB_GATE_OPEN, 0, {"poe.enable"}, {{"poeMibInit", "poe", 183, nullptr}, {"rfc3621MibInit", "rfc3621", 0, nullptr}}},
  // 79
    {MDB_GATE_OPEN, 0, {"mirror.enable"}, {{"mirrorMibInit", "mirror", 164, mirrorMibInit}}},
  // 80
    {MDB_GATE_OPEN, 0, {"ipv6.enable"}, {{"ipv6MibInit", "ipv6", 250, nullptr}, {"rfc2465MibInit", "rfc2465", 250, nullptr}}},
  // 80 (nested)
    {MDB_GATE_OPEN, 1, {"ripng.enable"}, {{"ripngMibinit", "ripng", 0, nullptr}}},
  // 80 (nested)
    {MDB_GATE_OPEN, 1, {"ospfv3.enable"}, {{"rfc5643MibInit", "rfc5643", 101, nullptr}, {"ospfv3MibInit", "ospfv3priv", 101, nullptr}}},
  // 80 (nested)
    {MDB_GATE_OPEN, 1, {"pim6.enable"}, {{"pim6MibInit", "pim6", 103, nullptr}}},
  // 80 (nested)
    {MDB_GATE_ANY_OPEN, 1, {"dhcp6.server.enable", "dhcp6.relay.enable", "dhcp6.client.enable"}, {{"dhcp6MibInit", "dhcp6", 106, nullptr}}},
  // 81
    {MDB_GATE_OPEN, 0, {"g8032.enable"}, {{"g8032MibInit", "g8032", 16, nullptr}}},
  // 82
    {MDB_GATE_OPEN, 0, {"g8031.enable"}, {{"g8031MibInit", "g8031", 15, nullptr}}},
  // 83
    {MDB_GATE_OPEN, 0, {"bfd.enable"}, {{"bfdMibInit", "bfd", 57, nullptr}}},
  // 84
    {MDB_GATE_OPEN, 0, {"scheduleprofile.enable"}, {{"scheduleprofileMibInit", "scheduleprofile", 167, nullptr}}},
  // 85
    {MDB_GATE_OPEN, 0, {"ddm.enable"}, {{"ddmMibInit", "ddm", 201, nullptr}}},
  // 86
    {MDB_GATE_OPEN, 0, {"policyroute.enable"}, {{"policyrouteMibInit", "policyroute", 206, nullptr}}},
  // 87
    {MDB_GATE_OPEN, 0, {"ipv4.arp.enable"}, {{"arpMibInit", "arp", 62, nullptr}}},
  // 88
    {MDB_GATE_OPEN, 0, {"gratuitousarp.enable"}, {{"gratuitousArpMibInit", "gratuitousarp", 0, nullptr}}},
  // 89
    {MDB_GATE_OPEN, 0, {"cpudefend.enable"}, {{"cpudefendMibInit", "cpudefend", 187, nullptr}}},
  // 90
    {MDB_GATE_OPEN, 0, {"supervlan.enable"}, {{"supervlanMibInit", "supervlan", 0, nullptr}}},
  // 91
    {MDB_GATE_OPEN, 0, {"ipsg.enable"}, {{"ipsgMibInit", "ipsg", 184, nullptr}}},
  // 92
    {MDB_GATE_OPEN, 0, {"pppoeplus.enable"}, {{"pppoeplusMibInit", "pppoeplus", 141, nullptr}}},
  // 93
    {MDB_GATE_PAIR, 0, {"igmp.enable", "mld.enable"}, {{"rfc5519vpnMibInit", "rfc5519vpn", 0, nullptr}, {"rfc5519MibInit", "rfc5519", 0, nullptr}}},
  // 94
    {MDB_GATE_OPEN, 0, {"antidos.enable"}, {{"dosantiattackMibInit", "dosantiattack", 210, nullptr}}},
  // 95
    {MDB_GATE_OPEN, 0, {"urpf.enable"}, {{"urpfMIbInit", "urpf", 256, nullptr}}},
  // 96
    {MDB_GATE_OPEN, 0, {"lacp.enable"}, {{"lacpMibInit", "lacp", 2, nullptr}}},
  // 97
    {MDB_GATE_OPEN, 0, {"diffserv.enable"}, {{"diffservMibInit", "diffserv", 166, nullptr}}},
  // 98
    {MDB_GATE_OPEN, 0, {"mvrp.enable"}, {{"mvrpMibInit", "mvrp", 32, nullptr}}},
  // 99
    {MDB_GATE_OPEN, 0, {"ra.enable"}, {{"raMibInit", "ra", 0, nullptr}}},
  // 100
    {MDB_GATE_OPEN, 0, {"lbm.enable"}, {{"lbmMibInit", "lbm", 279, nullptr}}},
  // 101
    {MDB_GATE_OPEN, 0, {"isis.enable"}, {{"isisMibInit", "isis", 54, nullptr}, {"rfc4444MibInit", "rfc4444", 54, nullptr}}},
  // 102
    {MDB_GATE_OPEN, 0, {"meter.enable"}, {{"meterMibInit", "meter", 0, nullptr}}},
  // 103
    {MDB_GATE_ALWAYS, 0, {}, {{"tunnelMibInit", "tunnel", 175, nullptr}}},
  // 104
    {MDB_GATE_OPEN, 0, {"hvs.enable"}, {{"hvsMibInit", "hvs", 27, nullptr}}},
  // 105
    {MDB_GATE_OPEN, 0, {"sflow.enable"}, {{"sflowMibInit", "sflow", 335, nullptr}}},
  // 106
    {MDB_GATE_OPEN, 0, {"ipprefix.enable"}, {{"ipPrefixMibInit", "ipPrefix", 226, nullptr}}},
  // 107
    {MDB_GATE_OPEN, 0, {"aspath.enable"}, {{"aspathMibInit", "aspath", 225, nullptr}}},
  // 108
    {MDB_GATE_OPEN, 0, {"mlag.enable"}, {{"mlagMibinit", "mlag", 31, nullptr}}},
  // 109
    {MDB_GATE_OPEN, 0, {"mad.enable"}, {{"madMibInit", "mad", 74, nullptr}}},
  // 110
    {MDB_GATE_OPEN, 0, {"flush.enable"}, {{"flushMibInit", "flush", 25, nullptr}}},
  // 111
    {MDB_GATE_OPEN, 0, {"udld.enable"}, {{"udldMibInit", "udld", 12, nullptr}}},
  // 112
    {MDB_GATE_OPEN, 0, {"l2cp.enable"}, {{"l2cpMibInit", "l2cp", 329, nullptr}}},
  // 113
    {MDB_GATE_ALWAYS, 0, {}, {{"entityMibInit", "entity", 0, nullptr}}},
  // 114
    {MDB_GATE_OPEN, 0, {"wred.enable"}, {{"wredMibInit", "wred", 202, nullptr}}},
  // 115
    {MDB_GATE_OPEN, 0, {"qinq.enable"}, {{"qinqMibInit", "qinq", 203, nullptr}}},
  // 116
    {MDB_GATE_OPEN, 0, {"tftp.client.enable"}, {{"tftpMibInit", "tftp", 242, nullptr}}},
  // 117
    {MDB_GATE_OPEN, 0, {"trafficpolicy.enable"}, {{"trafficpolicyfilterMibInit", "trafficpolicyfilter", 0, nullptr}, {"trafficpolicylimitMibInit", "trafficpolicylimit", 0, nullptr}, {"trafficpolicyredirectMibInit", "trafficpolicyredirect", 0, nullptr}, {"trafficpolicyremarkMibInit", "trafficpolicyremark", 0, nullptr}, {"trafficpolicyloopbackMibInit", "trafficpolicyloopback", 0, nullptr}, {"trafficpolicymirrorMibInit", "trafficpolicymirror", 0, nullptr}, {"trafficpolicystatisticMibInit", "trafficpolicystatistic", 0, nullptr}}},
  // 118
    {MDB_GATE_OPEN, 0, {"ndsnooping.enable"}, {{"ndsnoopingMibInit", "ndsnooping", 232, nullptr}}},
  // 119
    {MDB_GATE_OPEN, 0, {"mam.enable"}, {{"mamMibInit", "mam", 192, nullptr}}},
  // 119 (nested)
    {MDB_GATE_CLOSED, 1, {"mam.mibcompatible.enable"}, {{"fdbMibInit", "fdb", 0, nullptr}}},
  // 120
    {MDB_GATE_OPEN, 0, {"arpprobe.enable"}, {{"arpprobeMibInit", "arpprobe", 0, nullptr}}},
  // 121
    {MDB_GATE_OPEN, 0, {"stormctrl.enable"}, {{"stormcontrolMibInit", "stormcontrol", 191, nullptr}}},
  // 122
    {MDB_GATE_OPEN, 0, {"stormsuppression.enable"}, {{"stormsuppress_init", "stormsuppress", 190, nullptr}}},
  // 123
    {MDB_GATE_OPEN, 0, {"queue.enable"}, {{"queueMibInit", "queue", 218, nullptr}}},
  // 124
    {MDB_GATE_OPEN, 0, {"lpf.enable"}, {{"lpfMibinit", "localpreference", 0, nullptr}}},
  // 125
    {MDB_GATE_OPEN, 0, {"pep.enable"}, {{"pepMibInit", "pep", 0, nullptr}}},
  // 126
    {MDB_GATE_OPEN, 0, {"twamp.enable"}, {{"twampMibInit", "twamp", 269, nullptr}}},
  // 127
    {MDB_GATE_OPEN, 0, {"dns.enable"}, {{"dnsMibInit", "dns", 64, nullptr}}},
  // 128
    {MDB_GATE_OPEN, 0, {"watchdog.enable"}, {{"watchdogMibInit", "watchdog", 0, nullptr}}},
  // 129
    {MDB_GATE_ALWAYS, 0, {}, {{"rfc2790MibInit", "rfc2790", 0, nullptr}, {"rfc2575MibInit", "rfc2575", 145, rfc2575MibInit}}},
};
const uint32_t gMdbInitSequenceLength = sizeof gMdbInitSequence / sizeof gMdbInitSequence[0];

bool mdbGateOpen(const char* key) {
  char value[128] = {0};
  return silOptRead(0, key, 0, 0, 1, value, 127) <= 0 || value[0] == 't' || value[0] == 'T';
}

bool mdbGateClosedOpen(const char* key) {
  char value[128] = {0};
  return silOptRead(0, key, 0, 0, 1, value, 127) > 0 && (value[0] == 't' || value[0] == 'T');
}

int mdbInitCallDefault(const MdbInit* init) {
  if (init->fn == nullptr) return 0;  // not built yet: registers nothing
  MDB_DEBUG(0, MDB_DEBUG_STARTUP, "%s:%d: MDB init %s MIB\r\n", init->name);
  return init->fn();
}

int mdbInitSequenceRun(const MdbInitStep* steps, uint32_t count, MdbInitCallFn call) {
  int last = 0;
  bool enclosingOpen = false;
  auto runAll = [&](const MdbInitStep& step) {
    for (const MdbInit* init = step.inits; init < step.inits + MDB_INIT_MAX_PER_STEP && init->name != nullptr; init++)
      last = call(init);
  };
  for (uint32_t i = 0; i < count; i++) {
    const MdbInitStep& step = steps[i];
    // A nested step runs only under the open gate of the step above it, whose
    // own options are then not even read.
    if (step.nested && !enclosingOpen) continue;
    bool open = false;
    switch (step.kind) {
      case MDB_GATE_ALWAYS:
        open = true;
        break;
      case MDB_GATE_OPEN:
        open = mdbGateOpen(step.keys[0]);
        break;
      case MDB_GATE_CLOSED:
        open = mdbGateClosedOpen(step.keys[0]);
        break;
      case MDB_GATE_ANY_OPEN: {
        uint32_t opened = 0;  // each option read, each open one counted
        for (const char* key : step.keys)
          if (key != nullptr && mdbGateOpen(key)) opened++;
        open = opened > 0;
        break;
      }
      case MDB_GATE_PAIR: {
        // Two gates over the same inits: the second runs them only if the first did not.
        bool done = false;
        if (mdbGateOpen(step.keys[0])) {
          runAll(step);
          done = true;
        }
        if (mdbGateOpen(step.keys[1]) && !done) runAll(step);
        break;
      }
    }
    if (!step.nested) enclosingOpen = open;
    if (open && step.kind != MDB_GATE_PAIR) runAll(step);
  }
  return last;
}

int mdbUserMibInit(void) {
  int rc = mdbInitSequenceRun(gMdbInitSequence, gMdbInitSequenceLength, mdbInitCallDefault);
  // Outside the sequence, behind options of our own, closed by default.
  if (mdbGateClosedOpen("mdb.system.enable")) systemMibInit();
  // hwmc and traceroute: not built yet.
  svcStart();
  return rc;
}

// The terminate functions: each removes its module. Nothing in the process
// calls them during a normal run.
int rfc1907MibTerminate(void) { mdbModuleDeRegister("rfc1907"); return 0; }
int rfc2571MibTerminate(void) { mdbModuleDeRegister("rfc2571"); return 0; }
int rfc2572MibTerminate(void) { mdbModuleDeRegister("rfc2572"); return 0; }
int rfc2573nMibTerminate(void) { mdbModuleDeRegister("rfc2573n"); return 0; }
int rfc2573tMibTerminate(void) { mdbModuleDeRegister("rfc2573t"); return 0; }
int rfc2574MibTerminate(void) { mdbModuleDeRegister("rfc2574"); return 0; }
int rfc2575MibTerminate(void) { mdbModuleDeRegister("rfc2575"); return 0; }
int rfc1213Terminate(void) { mdbModuleDeRegister("rfc1213"); return 0; }
int rfc2233Terminate(void) { mdbModuleDeRegister("rfc2233"); return 0; }
int rmonMibTerminate(void) { mdbModuleDeRegister("rmon"); return 0; }
