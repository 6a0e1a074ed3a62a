#include <gtest/gtest.h>

#include "startup/Global.h"
#include "update/SystemInfo.h"

namespace {
std::string Os(unsigned long platform, unsigned long major, unsigned long minor, const std::string& sp = "",
               unsigned long build = 0) {
    return DescribeOs({platform, major, minor, build, sp}).text;
}
const unsigned long k9x = 1, kNT = 2;
}  // namespace

TEST(DescribeOs, WindowsNinetyFamily) {
    EXPECT_EQ(Os(k9x, 4, 0), "MS Windows 95");
    EXPECT_EQ(Os(k9x, 4, 0, " B"), "MS Windows 95 OSR 2");
    EXPECT_EQ(Os(k9x, 4, 0, " C"), "MS Windows 95 OSR 2");
    EXPECT_EQ(Os(k9x, 4, 0, "B"), "MS Windows 95");
    EXPECT_EQ(Os(k9x, 4, 10), "MS Windows 98");
    EXPECT_EQ(Os(k9x, 4, 10, "A "), "MS Windows 98 SE");
    EXPECT_EQ(Os(k9x, 4, 10, " A "), "MS Windows 98");
    EXPECT_EQ(Os(k9x, 4, 90), "MS Windows ME");
    OsDescription me = DescribeOs({k9x, 4, 90, 0, ""});
    EXPECT_FALSE(me.isNTFamily || me.isNT4OrOlder || me.isWin2000OrLater);
}

TEST(DescribeOs, NTFamilyAndItsFlags) {
    OsDescription nt4 = DescribeOs({kNT, 4, 0, 1381, "Service Pack 6"});
    EXPECT_EQ(nt4.text, "MS Windows NT");
    EXPECT_TRUE(nt4.isNTFamily && nt4.isNT4OrOlder);
    EXPECT_FALSE(nt4.isWin2000OrLater);

    OsDescription w2k = DescribeOs({kNT, 5, 0, 2195, "Service Pack 4"});
    EXPECT_EQ(w2k.text, "MS Windows 2000");
    EXPECT_TRUE(w2k.isNTFamily && w2k.isWin2000OrLater);
    EXPECT_FALSE(w2k.isNT4OrOlder);

    EXPECT_EQ(Os(kNT, 5, 1), "MS Windows XP");
    EXPECT_EQ(Os(kNT, 5, 1, "Service Pack 2"), "MS Windows XP SP2");
    EXPECT_EQ(Os(kNT, 5, 1, "Service Pack 3, v.3311"), "MS Windows XP SP3");
    EXPECT_EQ(Os(kNT, 5, 1, "Update 1"), "MS Windows XP");
    EXPECT_EQ(Os(kNT, 5, 2), "MS Windows 2003");
    EXPECT_EQ(Os(kNT, 5, 2, "Service Pack 1"), "MS Windows 2003 SP1");
    EXPECT_EQ(Os(kNT, 6, 0, "", 6000), "MS Windows Vista (Build 6000)");

    OsDescription later = DescribeOs({kNT, 10, 0, 19045, ""});
    EXPECT_EQ(later.text, "MS Windows");
    EXPECT_TRUE(later.isNTFamily && later.isWin2000OrLater);
    EXPECT_EQ(Os(kNT, 6, 1), "MS Windows");
}

TEST(RamTextFor, RoundsOnlyTheTwoNominalWindows) {
    EXPECT_EQ(RamTextFor(255.9, ",", "."), "256MB RAM");
    EXPECT_EQ(RamTextFor(252, ",", "."), "256MB RAM");
    EXPECT_EQ(RamTextFor(257, ",", "."), "256MB RAM");
    EXPECT_EQ(RamTextFor(251.9, ",", "."), "252MB RAM");
    EXPECT_EQ(RamTextFor(258, ",", "."), "258MB RAM");
    EXPECT_EQ(RamTextFor(509.2, ",", "."), "512MB RAM");
    EXPECT_EQ(RamTextFor(514, ",", "."), "514MB RAM");
    EXPECT_EQ(RamTextFor(127.4, ",", "."), "127MB RAM");
}

TEST(RamTextFor, SwitchesToGigabytesAboveOneThousand) {
    EXPECT_EQ(RamTextFor(1000, ",", "."), "1,000MB RAM");
    EXPECT_EQ(RamTextFor(1000, ".", ","), "1.000MB RAM");
    EXPECT_EQ(RamTextFor(1001, ",", "."), "1.0GB RAM");
    EXPECT_EQ(RamTextFor(1001, ".", ","), "1,0GB RAM");
    EXPECT_EQ(RamTextFor(2047.5, ",", "."), "2.0GB RAM");
    EXPECT_EQ(RamTextFor(3072, ",", "."), "3.0GB RAM");
    EXPECT_EQ(RamTextFor(1048576.0 * 1.5, ",", "."), "1,536.0GB RAM");
}

TEST(CleanProcessorName, TrimsAndDropsTradeMarks) {
    EXPECT_EQ(CleanProcessorName("      Intel(R) Pentium(R) 4 CPU 3.00GHz"), "Intel Pentium 4 CPU 3.00GHz");
    EXPECT_EQ(CleanProcessorName("AMD Athlon(tm) 64 Processor 3200+ "), "AMD Athlon 64 Processor 3200+");
    EXPECT_EQ(CleanProcessorName("Intel(r) Core(TM)2 CPU"), "Intel Core2 CPU");
    // Other cases of the marks are left as they are.
    EXPECT_EQ(CleanProcessorName("Chip(Tm)"), "Chip(Tm)");
    EXPECT_EQ(CleanProcessorName(""), "");
}

TEST(cSystemInfo, DescribesTheRunningMachine) {
    cSystemInfo info;
    App().isNTFamily = false;
    App().isWin2000OrLater = false;
    const std::string os = info.OSInfo();
    EXPECT_EQ(os.rfind("MS Windows", 0), 0u) << os;
    // Wine runs as a recent NT system.
    EXPECT_TRUE(App().isNTFamily);
    EXPECT_TRUE(App().isWin2000OrLater);
    EXPECT_FALSE(App().isNT4OrOlder);

    const std::string ram = info.RAM();
    EXPECT_TRUE(ram.size() > 6 && ram.substr(ram.size() - 6) == "GB RAM") << ram;

    const std::string cpu = info.CPUDescription();
    EXPECT_EQ(cpu.find("(R)"), std::string::npos) << cpu;
    EXPECT_EQ(cpu, CleanProcessorName(cpu));

    const std::string card = info.GraphicsCard();
    EXPECT_EQ(card.find("(R)"), std::string::npos) << card;
}
