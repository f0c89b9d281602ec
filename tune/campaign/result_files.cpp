// SPDX-License-Identifier: MIT
#include "tune/campaign/result_files.h"

#include <cerrno>
#include <cstring>

#include "runtime/report.h"

namespace {

void say_unwritten(const std::string& path, const char* then) {
    report("cannot write %s: %s%s", path.c_str(), std::strerror(errno), then);
}

// Flushes the file; the first time it cannot be written, says so and
// clears *good.
void check_written(std::FILE* file, const std::string& path, bool* good) {
    if (std::fflush(file) == 0 && !std::ferror(file))
        return;
    if (*good)
        say_unwritten(path, "");
    *good = false;
}

// Creates the file, with its HEADER when given; nothing for an empty path.
// Close-on-exec, since the test command has no business with it.
bool create(const std::string& path, result_files::file_ptr* file,
            const result_files::printer* header) {
    if (path.empty())
        return true;
    file->reset(open_in_place(path));
    if (*file && header)
        (*header)(file->get());
    if (*file && std::fflush(file->get()) == 0 && !std::ferror(file->get()))
        return true;
    say_unwritten(path, "; nothing written");
    return false;
}

}  // namespace

bool result_files::open(const test_options& options, const printer& csv_header,
                        journal_file* given_journal) {
    journal = given_journal;
    csv_path = options.csv_path;
    svg_path = options.svg_path;
    profile_path = options.profile_path;
    if (!create(csv_path, &csv_file, &csv_header) || !create(svg_path, &svg_file, nullptr))
        return false;
    if (profile_path.empty() || profile_file.prepare(profile_path))
        return true;
    say_unwritten(profile_path, "; nothing written");
    return false;
}

void result_files::csv_line_written() {
    if (csv_file)
        check_written(csv_file.get(), csv_path, &csv_good);
}

bool result_files::finish(bool finished, const char* what, const printer& csv_end,
                          const printer& svg, const printer& profile) {
    if (csv_file) {
        csv_end(csv_file.get());
        csv_line_written();
    }
    bool svg_good = true;
    if (svg_file) {
        svg(svg_file.get());
        check_written(svg_file.get(), svg_path, &svg_good);
    }
    if (profile_path.empty())
        return csv_good && svg_good;
    if (!finished) {
        profile_file.discard();
        report("%s: not written; the %s did not finish", profile_path.c_str(), what);
        return false;
    }
    const auto note = [this](const std::string& temporary) {
        if (journal->is_open())
            journal->temporary(temporary);
    };
    if (!profile_file.create(note)) {
        say_unwritten(profile_path, "");
        return false;
    }
    profile(profile_file.stream());
    if (profile_file.commit())
        return csv_good && svg_good;
    say_unwritten(profile_path, "");
    return false;
}
