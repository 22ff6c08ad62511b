#include "common/tables.h"

namespace vsp {

constexpr Vsp32s tabsqr[49] = {
    0x7FFF0000, 0x7C2E0000, 0x78AE0000, 0x75760000, 0x727D0000, 0x6FBA0000, 0x6D290000, 0x6AC20000, 0x68830000, 0x66660000,
    0x64690000, 0x62890000, 0x60C20000, 0x5F130000, 0x5D7A0000, 0x5BF50000, 0x5A820000, 0x59210000, 0x57CF0000, 0x568B0000,
    0x55550000, 0x542C0000, 0x530F0000, 0x51FC0000, 0x50F40000, 0x4FF60000, 0x4F010000, 0x4E140000, 0x4D300000, 0x4C530000,
    0x4B7E0000, 0x4AAF0000, 0x49E70000, 0x49250000, 0x48680000, 0x47B20000, 0x47000000, 0x46540000, 0x45AD0000, 0x450A0000,
    0x446B0000, 0x43D10000, 0x433B0000, 0x42A80000, 0x42190000, 0x418E0000, 0x41060000, 0x40820000, 0x40000000,
};

constexpr Vsp16s tabsqr_d[48] = {
    1954, 1792, 1648, 1522, 1414, 1314, 1230, 1150, 1082, 1018, 960, 910, 862, 818, 778, 742,
    706,  676,  648,  620,  594,  570,  550,  528,  508,  490,  474, 456, 442, 426, 414, 400,
    388,  378,  364,  356,  344,  334,  326,  318,  308,  300,  294, 286, 278, 272, 264, 260,
};

static consteval bool differencesMatch() {
    for (int k = 0; k < 48; k++)
        if (tabsqr_d[k] != (tabsqr[k] - tabsqr[k + 1]) / 32768) return false;
    return tabsqr[0] == 0x7FFF0000 && tabsqr[48] == 0x40000000;
}
static_assert(differencesMatch());

constexpr Vsp32s wlag[12] = {
    0x7FD85D00, 0x7F6B8700, 0x7EB6F000, 0x7DBBCA00, 0x7C7BBD00, 0x7AF8E280,
    0x7935BE80, 0x77353980, 0x74FA9880, 0x72897380, 0x6FE5AC98, 0x6D1364F8,
};

static consteval bool windowFalls() {
    for (int k = 1; k < 12; k++)
        if (wlag[k] >= wlag[k - 1]) return false;
    return true;
}
static_assert(windowFalls());

}  // namespace vsp
