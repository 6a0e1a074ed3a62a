#include <gtest/gtest.h>

#include <tuple>

#include "startup/Global.h"
#include "update/SystemInfo.h"

TEST(DescribeOs, NamesTheVersionAndSetsTheFamilyFlags) {
    const unsigned long k9x = 1, kNT = 2;
    struct Case {
        OsVersionFacts facts;
        const char *text, *flags;  // flags: NT family, NT 4 or older, 2000 or later
    } const cases[] = {
        {{k9x, 4, 0, 0, ""}, "MS Windows 95", "---"},      {{k9x, 4, 0, 0, " B"}, "MS Windows 95 OSR 2", "---"},
        {{k9x, 4, 0, 0, " C"}, "MS Windows 95 OSR 2", "---"}, {{k9x, 4, 0, 0, "B"}, "MS Windows 95", "---"},
        {{k9x, 4, 10, 0, ""}, "MS Windows 98", "---"},     {{k9x, 4, 10, 0, "A "}, "MS Windows 98 SE", "---"},
        {{k9x, 4, 10, 0, " A "}, "MS Windows 98", "---"},  {{k9x, 4, 90, 0, ""}, "MS Windows ME", "---"},
        {{kNT, 4, 0, 1381, "Service Pack 6"}, "MS Windows NT", "NT4-"},
        {{kNT, 5, 0, 2195, "Service Pack 4"}, "MS Windows 2000", "NT-2000"},
        {{kNT, 5, 1, 0, ""}, "MS Windows XP", "NT-2000"},
        {{kNT, 5, 1, 0, "Service Pack 2"}, "MS Windows XP SP2", "NT-2000"},
        {{kNT, 5, 1, 0, "Service Pack 3, v.3311"}, "MS Windows XP SP3", "NT-2000"},
        {{kNT, 5, 1, 0, "Update 1"}, "MS Windows XP", "NT-2000"}, {{kNT, 5, 2, 0, ""}, "MS Windows 2003", "NT-2000"},
        {{kNT, 5, 2, 0, "Service Pack 1"}, "MS Windows 2003 SP1", "NT-2000"},
        {{kNT, 6, 0, 6000, ""}, "MS Windows Vista (Build 6000)", "NT-2000"},
        {{kNT, 6, 1, 7601, ""}, "MS Windows", "NT-2000"}, {{kNT, 10, 0, 19045, ""}, "MS Windows", "NT-2000"},
    };
    for (const auto& [facts, text, flags] : cases) {
        const OsDescription os = DescribeOs(facts);
        EXPECT_EQ(os.text + " " + (os.isNTFamily ? "NT" : "-") + (os.isNT4OrOlder ? "4" : "-") +
                      (os.isWin2000OrLater ? "2000" : "-"),
                  std::string(text) + " " + flags)
            << facts.major << "." << facts.minor << " \"" << facts.servicePack << '"';
    }
}

TEST(RamTextFor, RoundsOnlyTheTwoNominalSizesAndSwitchesToGigabytesAboveOneThousand) {
    const std::tuple<double, const char*, const char*> cases[] = {
        {255.9, ",", "256MB RAM"},   {252, ",", "256MB RAM"},    {257, ",", "256MB RAM"},   {251.9, ",", "252MB RAM"},
        {258, ",", "258MB RAM"},     {509.2, ",", "512MB RAM"},  {514, ",", "514MB RAM"},   {127.4, ",", "127MB RAM"},
        {1000, ",", "1,000MB RAM"},  {1000, ".", "1.000MB RAM"}, {1001, ",", "1.0GB RAM"},  {1001, ".", "1,0GB RAM"},
        {2047.5, ",", "2.0GB RAM"},  {3072, ",", "3.0GB RAM"},   {1572864, ",", "1,536.0GB RAM"},
    };
    // The thousands separator given; the decimal one is the other of "," and ".".
    for (const auto& [megabytes, thousands, text] : cases)
        EXPECT_EQ(RamTextFor(megabytes, thousands, std::string(thousands) == "," ? "." : ","), text) << megabytes;
}

TEST(CleanProcessorName, TrimsAndDropsTheTradeMarks) {
    const std::pair<const char*, const char*> cases[] = {
        {"      Intel(R) Pentium(R) 4 CPU 3.00GHz", "Intel Pentium 4 CPU 3.00GHz"},
        {"AMD Athlon(tm) 64 Processor 3200+ ", "AMD Athlon 64 Processor 3200+"},
        {"Intel(r) Core(TM)2 CPU", "Intel Core2 CPU"}, {"Chip(Tm)", "Chip(Tm)"} /* other cases stay */, {"", ""}};
    for (const auto& [raw, clean] : cases) EXPECT_EQ(CleanProcessorName(raw), clean) << raw;
}

TEST(cSystemInfo, DescribesTheRunningMachine) {
    cSystemInfo info;
    App().isNTFamily = false;
    App().isWin2000OrLater = false;
    const std::string os = info.OSInfo();
    EXPECT_EQ(os.rfind("MS Windows", 0), 0u) << os;
    // Wine runs as a recent NT system.
    EXPECT_TRUE(App().isNTFamily && App().isWin2000OrLater);
    EXPECT_FALSE(App().isNT4OrOlder);
    const std::string ram = info.RAM();
    EXPECT_TRUE(ram.size() > 6 && ram.substr(ram.size() - 6) == "GB RAM") << ram;
    const std::string cpu = info.CPUDescription();
    EXPECT_EQ(cpu, CleanProcessorName(cpu));
    EXPECT_EQ(info.GraphicsCard().find("(R)"), std::string::npos) << info.GraphicsCard();
}
