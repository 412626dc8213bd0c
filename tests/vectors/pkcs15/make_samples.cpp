// Writes the sample PKCS#15 containers of generate.sh: each one built right
// after seeding the generator with a fixed seed, so the tests can rebuild
// it octet for octet. Prints one record per container and writes <name>.der.
#include <cstdio>
#include <cstring>
#include <string>

#include "korvex.h"

static std::string hex(const unsigned char* p, size_t n) {
    std::string s;
    char b[3];
    for (size_t i = 0; i < n; ++i) {
        std::snprintf(b, sizeof b, "%02x", p[i]);
        s += b;
    }
    return s;
}

int main(int argc, char** argv) {
    const char* dir = argc > 1 ? argv[1] : ".";
    unsigned char pwd[] = "password123";
    unsigned char rnd[40], seed[40];
    TSecretKey key;
    for (int i = 0; i < 64; ++i) key.b[i] = (unsigned char)(0x40 + 3 * i);
    for (int i = 0; i < 40; ++i) rnd[i] = (unsigned char)(0xA0 + i);
    struct Sample {
        const char* name;
        int gen;  // 0 pkcs15_create_conteiner, 1 _new, 2 _2012
        unsigned short usage;
        unsigned char kind;
    } samples[] = {{"c2001", 0, 0, 0}, {"c2001_usage40", 1, 0x40, 0}, {"c2012_256", 2, 0x80, 1}, {"c2012_512", 2, 0, 2}};
    for (const Sample& s : samples) {
        for (int i = 0; i < 40; ++i) seed[i] = (unsigned char)(i * 7 + s.gen + s.kind + 1);
        PRNG_init(seed);
        unsigned char out[1024];
        unsigned n = 0;
        type_uN<32> k32;
        std::memcpy(k32.b, key.b, 32);
        if (s.gen == 0) n = pkcs15_create_conteiner(out, &k32, rnd, pwd, 11);
        if (s.gen == 1) n = pkcs15_create_conteiner_new(out, &k32, rnd, pwd, 11, s.usage);
        if (s.gen == 2) n = pkcs15_create_conteiner_2012(out, &key, rnd, s.usage, pwd, 11, s.kind);
        if (n == 0) return 1;
        std::string path = std::string(dir) + "/" + s.name + ".der";
        FILE* f = std::fopen(path.c_str(), "wb");
        if (!f || std::fwrite(out, 1, n, f) != n) return 1;
        std::fclose(f);
        std::printf("name = %s\nfunction = %d\nusage = %u\nkind = %u\nseed = %s\npassword = %s\nkey = %s\nrnd = %s\n\n",
                    s.name, s.gen, s.usage, s.kind, hex(seed, 40).c_str(), hex(pwd, 11).c_str(),
                    hex(key.b, s.kind == 1 || s.gen < 2 ? 32 : 64).c_str(), hex(rnd, 40).c_str());
    }
    return 0;
}
