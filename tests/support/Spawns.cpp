#include "tests/support/Spawns.h"

#include <cstdlib>

void seedForSpawn(int row) {
    for (unsigned seed = 1;; ++seed) {
        srand(seed);
        if (rand() % spawnRows == row) {
            srand(seed);
            return;
        }
    }
}
