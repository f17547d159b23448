#include <iostream>

int main() {
    std::cerr << "drench: there is nothing to see yet.\n";
    return 1;
}
