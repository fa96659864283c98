#include "Hasard.h"

namespace zl3::demo {
namespace {

constexpr uint64_t Rotation(uint64_t x, int k) {
    return (x << k) | (x >> (64 - k));
}

}  // namespace

Hasard::Hasard(uint64_t graine) {
    uint64_t x = graine;
    for (uint64_t& s : s_) {
        s = Melange(x);
        x += 0x9E3779B97F4A7C15ULL;
    }
}

uint64_t Hasard::Suivant() {
    const uint64_t resultat = Rotation(s_[1] * 5, 7) * 9;
    const uint64_t t = s_[1] << 17;
    s_[2] ^= s_[0];
    s_[3] ^= s_[1];
    s_[1] ^= s_[2];
    s_[0] ^= s_[3];
    s_[2] ^= t;
    s_[3] = Rotation(s_[3], 45);
    return resultat;
}

uint64_t Hasard::Sous(uint64_t n) {
    if (n <= 1) return 0;
    // Rejects the top values that would favour the small results.
    const uint64_t limite = UINT64_MAX - UINT64_MAX % n;
    uint64_t x;
    do {
        x = Suivant();
    } while (x >= limite);
    return x % n;
}

int Hasard::Entre(int min, int max) {
    if (max <= min) return min;
    return min + static_cast<int>(Sous(static_cast<uint64_t>(max - min) + 1));
}

double Hasard::Reel() {
    return static_cast<double>(Suivant() >> 11) * 0x1.0p-53;
}

std::size_t Hasard::Pondere(std::span<const double> poids) {
    double total = 0;
    for (const double p : poids)
        total += p;
    double r = Reel() * total;
    for (std::size_t i = 0; i < poids.size(); ++i) {
        if (r < poids[i]) return i;
        r -= poids[i];
    }
    // Rounding left r at the very top: the last index with a weight.
    for (std::size_t i = poids.size(); i > 0; --i)
        if (poids[i - 1] > 0) return i - 1;
    return 0;
}

}  // namespace zl3::demo
