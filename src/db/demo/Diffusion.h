// What one demo station aired: its music and imaging items hour by hour over the period, as a
// music programming clock with rotating categories would have put them on air.
#pragma once

#include <cstdint>
#include <vector>

#include "Bibliotheque.h"
#include "DateTime.h"

namespace zl3::demo {

// Seconds since 1970-01-01 00:00:00 of a wall-clock time (no time zone: the station's own
// clock, as the suite writes it).
int64_t Instant(const DateTime& t);
DateTime DateDeLInstant(int64_t instant);

struct EvenementDemo {
    int64_t instant = 0;  // start on air, to the second
    int morceau = 0;      // index in BibliothequeDemo::morceaux
    // 0, or the rank of the event among those that started in the same second (a jingle fired
    // over the intro of the next song).
    int sequence = 0;
};

// The events of one station from `premierJour` for `nbJours` days, in broadcast order.
std::vector<EvenementDemo> GenererDiffusion(const BibliothequeDemo& bibliotheque,
                                            const DateTime& premierJour, int nbJours,
                                            uint64_t graine);

}  // namespace zl3::demo
