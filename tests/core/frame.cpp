// Version query.
#include <cstring>

#include "core/cpu.h"
#include "support/level_test.h"
#include "version/version_records.h"

namespace vsp::test {

class Frame : public LevelTest {};
VSPSC_EVERY_LEVEL(Frame);

TEST_P(Frame, VersionQueryGivesTheRecordOfTheProcessor) {
    const VspLibraryVersion* version = api.vspscGetLibVersion();
    ASSERT_NE(nullptr, version);
    EXPECT_EQ(version, api.vspscGetLibVersion());
    EXPECT_STREQ(ownGetFeature(0x80) != 0 ? "libvspscy8.so.6.1+" : "libvspscy8.so.6.1", version->Name);
}

TEST(Version, RecordsDifferOnlyInTheName) {
    EXPECT_STREQ("libvspscy8.so.6.1+", kVersionAboveBaseline.Name);
    EXPECT_STREQ("libvspscy8.so.6.1", kVersionBaseline.Name);
    for (const VspLibraryVersion& version : {kVersionAboveBaseline, kVersionBaseline}) {
        EXPECT_EQ(6, version.major);
        EXPECT_EQ(1, version.minor);
        EXPECT_EQ(137, version.majorBuild);
        EXPECT_EQ(818, version.build);
        EXPECT_EQ(0, std::memcmp(version.targetCpu, "y8\0\0", 4));
        EXPECT_STREQ("6.1 build 137.56", version.Version);
        EXPECT_STREQ("Mar 17 2010", version.BuildDate);
    }
}

}  // namespace vsp::test
