// SPDX-License-Identifier: MIT
// The trial profile at boot: tried on top of the known-good profiles for a
// limited number of boots, until it is blessed or its tries run out.
#ifndef PADKIT_TUNE_TRIAL_H
#define PADKIT_TUNE_TRIAL_H

// The trial's part of apply --system, once the known-good profiles are in
// place: counts one try on disk, then applies the trial and marks it
// applied in this boot, the stop signals held from the count on; a trial without
// tries left is marked bad and left out, and one that cannot be applied is
// marked bad at once. Either is said on standard error. Returns the exit
// status: 0 unless the board could not be put back.
int apply_trial(bool verbose);

#endif
