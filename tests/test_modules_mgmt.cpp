// The first modules: system, clock and mirror, over the default device.
#include "test_support.h"
#include "mdb/mdb_modules.h"
#include "services/svc_device.h"
#include "services/svc_store.h"

#include <sys/stat.h>

using namespace mdbtest;

namespace {

class Modules : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    char dir[] = "/tmp/mdbtest-ram-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dir));
    ramDir = dir;
    silOptSet("mdb.ramdir", dir);
    ASSERT_EQ(0, systemMibInit());
    ASSERT_EQ(0, clockMibInit());
    ASSERT_EQ(0, mirrorMibInit());
    svcStoreClear();
    svcDefaultDevice();
  }
  void TearDown() override {
    int ignored = system(("rm -rf " + ramDir).c_str());
    (void)ignored;
    DictTest::TearDown();
  }
  uint32_t get(const char* name, std::vector<uint32_t> index, uint32_t* value) {
    uint32_t length = 4;
    return mdbGetApi(name, index.data(), static_cast<uint32_t>(index.size()), value, &length, nullptr);
  }
  std::string text(const char* name, std::vector<uint32_t> index, uint32_t* rc = nullptr) {
    char buf[4096];
    uint32_t length = sizeof buf;
    uint32_t r = mdbGetApi(name, index.data(), static_cast<uint32_t>(index.size()), buf, &length, nullptr);
    if (rc != nullptr) *rc = r;
    return r == 0 ? std::string(buf, length) : std::string("<error>");
  }
  uint32_t set(const char* name, std::vector<uint32_t> index, uint32_t value, uint32_t options = 1) {
    return mdbSetApi(name, index.data(), static_cast<uint32_t>(index.size()), &value, 4, nullptr, options);
  }
  uint32_t setText(const char* name, std::vector<uint32_t> index, const std::string& value) {
    return mdbSetApi(name, index.data(), static_cast<uint32_t>(index.size()), value.data(),
                     static_cast<uint32_t>(value.size()), nullptr, 1);
  }
  bool exists(const std::string& file) const { return access((ramDir + "/" + file).c_str(), F_OK) == 0; }
  std::string ramDir;
};

TEST_F(Modules, SystemScalarsAndTheirLimits) {
  uint32_t index[] = {0}, count = 0, value = 0, length = 4;
  // A walk step from the empty index gives .0; from .0 it ends without a service.
  ASSERT_EQ(0u, mdbGetNext("system:systemCaseSensitive", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ(1u, count);
  EXPECT_EQ(0u, index[0]);
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE,
            mdbGetNext("system:systemCaseSensitive", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("system:systemCaseSensitive", {1}, &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("system:systemCaseSensitive", {}, &value));

  EXPECT_EQ(0u, setText("system:systemHostName", {0}, std::string(128, 'h')));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("system:systemHostName", {0}, std::string(129, 'h')));
  EXPECT_EQ(std::string(128, 'h'), text("system:systemHostName", {0}));
  EXPECT_EQ(0u, setText("system:systemMotd", {0}, std::string(512, 'm')));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("system:systemMotd", {0}, std::string(513, 'm')));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("system:systemCaseSensitive", {0}, 2));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("system:systemCaseSensitive", {0}, 0xFFFFFFFFu));
  EXPECT_EQ(0u, set("system:systemCaseSensitive", {0}, 1));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("system:systemAuthdegenerate", {0}, 0));
  EXPECT_EQ(0u, set("system:systemAuthdegenerate", {0}, 2));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("system:systemCliVersion", {0}, 1));
  // The dispatcher does not stop NVM writes of read-only objects; the handler does.
  uint32_t v = 1;
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, mdbNvmSet("system:systemWriteFileState", index, 1, &v, 4));
  // Taken and forgotten.
  EXPECT_EQ(0u, set("system:systemEraseIssConfig", {0}, 77));
  EXPECT_EQ(0u, get("system:systemEraseIssConfig", {0}, &value));
  EXPECT_EQ(0u, value);
}

TEST_F(Modules, SystemSavesAndErasesTheConfiguration) {
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("system:systemWriteConfig", {0}, 0));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("system:systemWriteConfig", {0}, 4));
  EXPECT_FALSE(exists("start.cfg"));
  ASSERT_EQ(0u, setText("system:systemHostName", {0}, "edge-7"));
  ASSERT_EQ(0u, set("system:systemWriteConfig", {0}, 1));
  EXPECT_TRUE(exists("start.cfg"));
  EXPECT_FALSE(exists("backupstart.cfg"));
  EXPECT_EQ(0u, get("system:systemWriteConfig", {0}, &value));
  EXPECT_EQ(1u, value);  // reads 1 whatever was written
  ASSERT_EQ(0u, set("system:systemWriteConfig", {0}, 2));
  EXPECT_TRUE(exists("backupstart.cfg"));

  // Erase 3: start file, then backup.
  ASSERT_EQ(0u, set("system:systemEraseConfig", {0}, 3));
  EXPECT_FALSE(exists("start.cfg"));
  EXPECT_FALSE(exists("backupstart.cfg"));

  // Write 3 stops at the first failure: a directory where the start file goes.
  ASSERT_EQ(0, mkdir((ramDir + "/start.cfg").c_str(), 0755));
  EXPECT_NE(0u, set("system:systemWriteConfig", {0}, 3));
  EXPECT_FALSE(exists("backupstart.cfg"));
  rmdir((ramDir + "/start.cfg").c_str());

  // NVM writes have no validation: a value other than 1 or 2 acts like 3.
  uint32_t index[] = {0}, seven = 7;
  ASSERT_EQ(0u, mdbNvmSet("system:systemWriteConfig", index, 1, &seven, 4));
  EXPECT_TRUE(exists("start.cfg"));
  EXPECT_TRUE(exists("backupstart.cfg"));

  // The saved file brings the values back.
  ASSERT_EQ(0u, setText("system:systemHostName", {0}, "changed"));
  std::string path = ramDir + "/start.cfg";
  ASSERT_EQ(0, svcStoreLoad(path.c_str()));
  EXPECT_EQ("edge-7", text("system:systemHostName", {0}));
}

TEST_F(Modules, ClockReadsOneAttributeTwice) {
  EXPECT_EQ("UTC", text("clock:clockClockTimeZoneName", {0}));
  EXPECT_EQ(0u, setText("clock:clockHardWareTime", {0}, "2030-01-02 03:04:05"));
  std::string hw = text("clock:clockHardWareTime", {0});
  std::string sw = text("clock:clockSoftWareTime", {0});
  EXPECT_EQ(0u, hw.rfind("2030-01-02 03:04:0", 0)) << hw;
  EXPECT_EQ(0u, sw.rfind("2030-01-02 03:04:0", 0)) << sw;
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, setText("clock:clockSoftWareTime", {0}, "2030-01-02 03:04:05"));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("clock:clockDfltClockTimeZoneOffset", {0}, 1));
  EXPECT_EQ(MDB_ERR_WRONG_VALUE, setText("clock:clockHardWareTime", {0}, "yesterday"));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("clock:clockClockTimeZone", {0}, std::string(129, 'z')));
  uint32_t offset = static_cast<uint32_t>(-8);
  EXPECT_EQ(0u, set("clock:clockClockTimeZoneOffset", {0}, offset));
  EXPECT_EQ(0u, get("clock:clockClockTimeZoneOffset", {0}, &offset));
  EXPECT_EQ(static_cast<uint32_t>(-8), offset);
}

TEST_F(Modules, MirrorGroupsRowsAndLimits) {
  uint32_t value = 0;
  // The capabilities and the default group.
  EXPECT_EQ(0u, get("mirror:mirrorGenMaxGroup", {0}, &value));
  EXPECT_EQ(4u, value);
  EXPECT_EQ("1/0/24", text("mirror:mirrorGroupMirrorToPort", {1}));
  // An index column answers without a row; another column asks the service.
  EXPECT_EQ(0u, get("mirror:mirrorGroupIndex", {9}, &value));
  EXPECT_EQ(9u, value);
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("mirror:mirrorGroupVlan", {9}, &value));
  EXPECT_EQ(0u, get("mirror:mirrorGroupRefcnt", {9}, &value));  // a constant, no service

  // A group made by createRequest, written, then removed by invalid.
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorGroupStatus", {2}, 0));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorGroupStatus", {2}, 5));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorGroupStatus", {2}, 6));  // RowStatus's destroy
  ASSERT_EQ(0u, set("mirror:mirrorGroupStatus", {2}, 2));
  EXPECT_EQ(0u, get("mirror:mirrorGroupStatus", {2}, &value));
  EXPECT_EQ(3u, value);  // underCreation
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorGroupVlan", {2}, 4095));
  EXPECT_EQ(0u, set("mirror:mirrorGroupVlan", {2}, 4094));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorGroupTpId", {2}, 65536));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorGroupType", {2}, 3));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("mirror:mirrorGroupDestIpAddr", {2}, std::string(17, '1')));
  EXPECT_EQ(0u, setText("mirror:mirrorGroupSrcIpAddr", {2}, std::string(255, '1')));
  EXPECT_EQ(std::string(16, '1'), text("mirror:mirrorGroupSrcIpAddr", {2}));  // read with a capacity of 16
  // Destination and source type are one attribute.
  EXPECT_EQ(0u, set("mirror:mirrorGroupDestIpType", {2}, 2));
  EXPECT_EQ(0u, get("mirror:mirrorGroupSrcIpType", {2}, &value));
  EXPECT_EQ(2u, value);
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("mirror:mirrorGroupIndex", {2}, 2));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("mirror:mirrorGroupRefcnt", {2}, 2));
  ASSERT_EQ(0u, set("mirror:mirrorGroupStatus", {2}, 4));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("mirror:mirrorGroupStatus", {2}, &value));
}

TEST_F(Modules, MirrorMacTablesWalkAndRestartOnAPartialIndex) {
  // Rows of mirrorIfMacEntry: interface, MAC address, mask.
  std::vector<std::vector<uint32_t>> keys = {
      {3, 0, 14, 94, 1, 2, 3, 48}, {1, 0, 14, 94, 9, 9, 9, 24}, {1, 0, 14, 94, 1, 2, 3, 48}};
  for (auto& k : keys) ASSERT_EQ(0u, set("mirror:mirrorIfMacStatus", k, 2));
  uint32_t index[MDB_MAX_INDEX] = {0}, count = 0, value = 0, length = 4;
  std::vector<std::vector<uint32_t>> walked;
  while (mdbGetNext("mirror:mirrorIfMacStatus", index, MDB_MAX_INDEX, &count, &value, &(length = 4), nullptr) == 0)
    walked.emplace_back(index, index + count);
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(keys, walked);

  // A partial index of four sub-ids starts from the first row again.
  uint32_t partial[MDB_MAX_INDEX] = {1, 0, 14, 94};
  count = 4;
  ASSERT_EQ(0u, mdbGetNext("mirror:mirrorIfMacStatus", partial, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ(keys[0], std::vector<uint32_t>(partial, partial + count));

  // The index columns: the MAC address as 6 bytes, the mask from a 16-bit field.
  EXPECT_EQ(std::string("\x00\x0e\x5e\x09\x09\x09", 6), text("mirror:mirrorIfMacAddr", keys[1]));
  EXPECT_EQ(0u, get("mirror:mirrorIfMacMask", keys[1], &value));
  EXPECT_EQ(24u, value);
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorIfMacInGroupId", keys[0], 16));
  EXPECT_EQ(0u, set("mirror:mirrorIfMacInGroupId", keys[0], 15));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("mirror:mirrorVlanMacInEnable", keys[0], 3));
  // Too short an index for a write cannot be a row.
  EXPECT_EQ(MDB_ERR_NO_CREATION, mdbValidate("mirror:mirrorIfMacStatus", partial, 4, &value, 4, 0));

  // The VLAN tables are empty on the default device: a walk ends at once.
  count = 0;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE,
            mdbGetNext("mirror:mirrorVlanStatus", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ(46u, stat(MDB_STAT_objTotalCount) - 15 - 8);
}

}  // namespace
