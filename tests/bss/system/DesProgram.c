// Calls each exported name of the DES functions from C. Exit status 0 if all is as it should be; otherwise
// the number of the line that is not.

#include "bss/system/des.h"

#include <stdio.h>
#include <string.h>

#define REQUIRE(condition)                                                                                   \
    if (!(condition)) {                                                                                      \
        fprintf(stderr, "line %d: %s\n", __LINE__, #condition);                                              \
        return __LINE__ & 0xff;                                                                              \
    }

int main(void) {
    unsigned char key[24] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x23, 0x45, 0x67, 0x89,
                             0xAB, 0xCD, 0xEF, 0x01, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x01, 0x23};
    static const unsigned char first[8] = {0xA8, 0x26, 0xFD, 0x8C, 0xE5, 0x3B, 0x85, 0x5F};
    unsigned char text[17] = "The qufck brown ";
    unsigned char made[24];
    unsigned long one[32];
    unsigned long three[96];
    unsigned long again[96];
    char phrase[] = "a phrase";

    des3key(key, 0);
    Ddes(text, text);
    REQUIRE(memcmp(text, first, 8) == 0)
    cp3key(three);
    cpkey(one);
    REQUIRE(memcmp(one, three, sizeof(one)) == 0)

    des3key(key, 1);
    Ddes(text, text);
    use3key(three);
    D2des(text, text);
    REQUIRE(memcmp(text, first, 8) == 0)

    deskey(key + 8, 1);
    cp3key(again);
    REQUIRE(memcmp(again, three, sizeof(one)) != 0)
    REQUIRE(memcmp(again + 32, three + 32, 2 * sizeof(one)) == 0)
    usekey(one);
    cp3key(again);
    REQUIRE(memcmp(again, three, sizeof(three)) == 0)

    makekey(phrase, made);
    make2key(phrase, made);
    make3key(phrase, made);
    REQUIRE(made[0] == 0x69 && made[23] == 0xFB)
    des2key(key, 0);
    cp3key(again);
    REQUIRE(memcmp(again, again + 64, sizeof(one)) == 0)
    return 0;
}
