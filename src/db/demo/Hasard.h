// Deterministic pseudo-random numbers for the demo database.
//
// The demo must give the same records for the same options on every machine and with every
// standard library, so nothing here uses <random>'s distributions (their algorithms are left to
// each library): the generator is xoshiro256**, seeded through splitmix64, and every draw is
// derived from its 64-bit output by fixed arithmetic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <utility>
#include <vector>

namespace zl3::demo {

// splitmix64 step: mixes a 64-bit value into a well-spread one.
constexpr uint64_t Melange(uint64_t x) {
    x += 0x9E3779B97F4A7C15ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

// Seed of an independent stream: the user's seed combined with the parts that name the stream
// (base, station, purpose). Two streams that differ in any part are unrelated.
constexpr uint64_t Graine(uint64_t graine, std::initializer_list<uint64_t> parties) {
    uint64_t h = Melange(graine);
    for (const uint64_t p : parties)
        h = Melange(h ^ Melange(p + 0x632BE59BD9B4E019ULL));
    return h;
}

class Hasard {
  public:
    explicit Hasard(uint64_t graine);

    uint64_t Suivant();
    // Uniform integer in [0, n), n > 0, without modulo bias.
    uint64_t Sous(uint64_t n);
    // Uniform integer in [min, max] (inclusive).
    int Entre(int min, int max);
    // Uniform real number in [0, 1).
    double Reel();
    // True with probability p.
    bool Chance(double p) { return Reel() < p; }
    // Index drawn with the given weights (not all zero).
    std::size_t Pondere(std::span<const double> poids);
    // Fisher-Yates shuffle.
    template <typename T>
    void Melanger(std::vector<T>& v) {
        for (std::size_t i = v.size(); i > 1; --i)
            std::swap(v[i - 1], v[Sous(i)]);
    }

  private:
    uint64_t s_[4];
};

// An element of a non-empty list.
template <typename T>
const T& Un(Hasard& h, std::span<const T> liste) {
    return liste[h.Sous(liste.size())];
}

}  // namespace zl3::demo
