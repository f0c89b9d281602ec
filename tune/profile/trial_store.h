// SPDX-License-Identifier: MIT
// The trial profile on disk. Its state is in file names alone, so that each
// change of state is one rename and a directory listing tells the state,
// whenever the power went:
//   /var/lib/padkit/trial-G+L-D.conf     pending: L tries left, D tries done
//   /var/lib/padkit/trial-G+L-D@B.conf   pending, applied whole in the boot B
//   /var/lib/padkit/trial-G+0-D.bad      bad: failed after D tries
//   /etc/padkit.d/~trial-G.conf          blessed: one of the known-good profiles
// G numbers the trials installed on the board. Of several trial files (a
// replacement cut short) the one with the highest G is the trial, unless a
// blessed one is newer. A trial file that is not a regular file is bad.
#ifndef PADKIT_TUNE_TRIAL_STORE_H
#define PADKIT_TUNE_TRIAL_STORE_H

#include <string>
#include <vector>

enum class trial_state { none, pending, bad, good };

struct trial {
    trial_state state = trial_state::none;
    std::string path;  // none: empty
    int number = 0;    // G
    int left = 0;
    int done = 0;          // good: unknown, 0
    bool applied = false;  // pending: applied whole in this boot
    bool regular = true;   // false: bad, as no regular file
};

struct trial_listing {
    trial current;    // pending or bad; else the newest blessed one, good; else none
    int highest = 0;  // the highest G in use, blessed or not
    std::vector<std::string> trial_files;  // every pending or bad file, oldest first
};

// Where the trial lives and where a blessed one goes, on this board.
std::string trial_dir();
std::string known_good_dir();

// Lists both directories (a missing one is empty); false, reported, when
// one cannot be read.
bool list_trials(trial_listing* listing);

// The file name of a trial in each state; BOOT: the boot that applied a
// pending one whole, if any.
std::string pending_name(int number, int left, int done, const std::string& boot = "");
std::string bad_name(int number, int done);
std::string blessed_name(int number);

// The kernel's id of this boot (/proc/sys/kernel/random/boot_id), as a
// trial's name carries it; empty when it cannot be read.
std::string boot_id();

// A trial file's first line, a comment that names the profile it was
// installed from, and that name read back from the file (empty when its first
// line names none).
std::string source_line(const std::string& source);
std::string source_of(const std::string& path);

// Creates the directory and its parents where missing. False, reported.
bool make_dir(const std::string& dir);

// Writes the text to the file NAME in the trial directory (created when
// missing), durably: through a temporary file, synced, renamed into place,
// directory synced. False, reported, when that fails; nothing is left then.
bool install_trial_file(const std::string& text, const std::string& name);

// One rename, then the directories of both names synced. False, reported.
bool move_synced(const std::string& from, const std::string& to);

// Removes the files, then syncs the trial directory. False, reported.
bool remove_synced(const std::vector<std::string>& files);

#endif
