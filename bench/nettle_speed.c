/* Peer figure for bench/compare.sh: Nettle's GOST R 34.11-94 (gosthash94,
   the test parameter set, as its own tools use) over 8 KiB messages, in MB/s
   of CPU time. Built and run by compare.sh; not part of the library. */
#include <nettle/gosthash94.h>
#include <stdio.h>
#include <time.h>

static double cpu(void) {
    struct timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

int main(void) {
    static unsigned char msg[8192], out[GOSTHASH94_DIGEST_SIZE];
    struct gosthash94_ctx ctx;
    size_t n = 0;
    const double t0 = cpu();
    double t;
    do {
        for (int i = 0; i < 64; ++i, ++n) {
            gosthash94_init(&ctx);
            gosthash94_update(&ctx, sizeof msg, msg);
            gosthash94_digest(&ctx, sizeof out, out);
            msg[0] ^= out[0];
        }
    } while ((t = cpu() - t0) < 2.0);
    printf("nettle gosthash94 8192 bytes: %.1f MB/s\n", n * sizeof msg / t / 1e6);
    return 0;
}
