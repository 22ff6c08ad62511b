#include "g729/gain_tables.h"

namespace vsp {

constexpr GainCodebooks gainCodebooks = {
    8,
    4,
    16,
    8,
    0,
    {{1, 1516}, {1551, 2425}, {1831, 5022}, {57, 5404}, {1921, 9291}, {3242, 9949}, {356, 14756}, {2678, 27162}},
    {{826, 2005},
     {1994, 0},
     {5142, 592},
     {6160, 2395},
     {8091, 4861},
     {9120, 525},
     {10573, 2966},
     {11569, 1196},
     {13260, 3256},
     {14194, 1630},
     {15132, 4914},
     {15161, 14276},
     {15434, 237},
     {16112, 3392},
     {17299, 1861},
     {18973, 5935}},
    {10808, 12374, 19778, 32567},
    {14087, 16188, 20274, 21321, 23525, 25232, 27873, 30542},
    {{31881, 26416}, {31548, 27816}},
    {{2089405952, 1731217536}, {2067549984, 1822990272}},
    -17103,
    7,
    3,
    {5, 1, 4, 7, 3, 0, 6, 2},
    {4, 6, 0, 2, 12, 14, 8, 10, 15, 11, 9, 13, 7, 3, 1, 5},
    {5, 1, 7, 4, 2, 0, 6, 3},
    {2, 14, 3, 13, 0, 15, 1, 12, 6, 10, 7, 9, 4, 11, 5, 8},
};

constexpr GainCodebooks gainCodebooks_6k = {
    8,
    6,
    8,
    6,
    1,
    {{5849, 0}, {2929, 1078}, {9425, 2731}, {6068, 6093}, {3617, 6747}, {3171, 9280}, {3915, 12872}, {4987, 22294}},
    {{0, 4175}, {3988, 0}, {4478, 7324}, {7876, 7821}, {10291, 11385}, {10828, 27602}, {11956, 10735}, {16423, 15724}},
    {9919, 19675},
    {17233, 25144},
    {{18756, 20596}, {26166, 19322}},
    {{1229182965, 1349785278}, {1714804347, 1266310978}},
    -28940,
    6,
    2,
    {0, 4, 6, 5, 2, 1, 7, 3},
    {0, 4, 3, 7, 5, 1, 6, 2},
    {0, 5, 4, 7, 1, 3, 2, 6},
    {0, 5, 7, 2, 1, 4, 6, 3},
};

constexpr Vsp16s pred[kEnergies] = {5571, 4751, 2785, 1556};

constexpr GainCodebooks_32f gainCodebooks_32f = {
    {{1e-05f, 0.185084f},
     {0.094719f, 0.296035f},
     {0.111779f, 0.613122f},
     {0.003516f, 0.65978f},
     {0.117258f, 1.134277f},
     {0.197901f, 1.214512f},
     {0.021772f, 1.801288f},
     {0.163457f, 3.3157f}},
    {{0.050466f, 0.244769f},
     {0.121711f, 1e-05f},
     {0.313871f, 0.072357f},
     {0.375977f, 0.292399f},
     {0.49387f, 0.59341f},
     {0.556641f, 0.064087f},
     {0.645363f, 0.362118f},
     {0.706138f, 0.14611f},
     {0.809357f, 0.397579f},
     {0.866379f, 0.199087f},
     {0.923602f, 0.599938f},
     {0.925376f, 1.742757f},
     {0.942028f, 0.029027f},
     {0.983459f, 0.414166f},
     {1.055892f, 0.227186f},
     {1.158039f, 0.724592f}},
    {0.659681f, 0.755274f, 1.207205f, 1.98774f},
    {0.429912f, 0.494045f, 0.618737f, 0.650676f, 0.717949f, 0.77005f, 0.850628f, 0.932089f},
    {{31.134575f, 1.612322f}, {0.481389f, 0.053056f}}};

constexpr Vsp32f pred_32f[kEnergies] = {0.68f, 0.58f, 0.34f, 0.19f};

// What the maps of indices turn round, and thresholds that rise.
static consteval bool consistent(const GainCodebooks& t) {
    for (int i = 0; i < t.entries1; i++)
        if (t.imap1[t.map1[i]] != i) return false;
    for (int i = 0; i < t.entries2; i++)
        if (t.imap2[t.map2[i]] != i) return false;
    for (int i = 1; i < t.entries1 - t.candidates1; i++)
        if (t.thr1[i] <= t.thr1[i - 1]) return false;
    for (int i = 1; i < t.entries2 - t.candidates2; i++)
        if (t.thr2[i] <= t.thr2[i - 1]) return false;
    return true;
}
static_assert(consistent(gainCodebooks) && consistent(gainCodebooks_6k));

template <int n, class T>
static consteval Vsp64f sumOf(const T (&rows)[n][2]) {
    Vsp64f sum = 0;
    for (const auto& row : rows) sum += row[0] + row[1];
    return sum;
}
static_assert(sumOf(gainCodebooks.gbk1) == 87162 && sumOf(gainCodebooks.gbk2) == 229081);
static_assert(sumOf(gainCodebooks_6k.gbk1) == 101056 && sumOf(gainCodebooks_6k.gbk2) == 150606);

}  // namespace vsp
