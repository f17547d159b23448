#include "common/Chance.h"

namespace drench {

std::uint64_t Chance::bits() {
    state_ += 0x9e3779b97f4a7c15u;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

double Chance::share() {
    return static_cast<double>(bits() >> 11) * 0x1p-53;
}

double Chance::between(double low, double high) {
    return low + (high - low) * share();
}

int Chance::below(int limit) {
    return static_cast<int>(share() * limit);
}

double Chance::bell() {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i)
        sum += share();
    return sum;
}

} // namespace drench
