#include <stdio.h>
#include <vspsc.h>

int main(void) {
    const Vsp16s half = 16384; /* 0.5 in Q15 */
    Vsp16s x[4] = {1000, -1000, 3, 32767};
    if (vspsMulC_NR_16s_ISfs(half, x, 4, 15) != vspStsNoErr) return 1;
    printf("%s: %d %d %d %d\n", vspscGetLibVersion()->Name, x[0], x[1], x[2], x[3]);
    return 0;
}
