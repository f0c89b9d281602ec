// SPDX-License-Identifier: MIT
#include "memtest/memtest.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "memtest/comparison.h"
#include "memtest/data_bus.h"
#include "memtest/options.h"
#include "runtime/end_of_run.h"
#include "runtime/exit_status.h"
#include "runtime/message.h"
#include "runtime/report.h"
#include "runtime/stop_signals.h"
#include "tune/sweep/progress.h"
#include "tune/sweep/whole_file.h"
#include "tune/usage/usage.h"

namespace {

// Stop signals are taken, and progress shown, between pieces of this size.
constexpr std::size_t piece_words = (std::size_t{1} << 20) / sizeof(uint64_t);

// What the kernel can give without swapping: MemAvailable, or MemFree on
// kernels before 3.14. False when /proc/meminfo tells neither.
bool free_memory(uint64_t* bytes) {
    std::ifstream meminfo("/proc/meminfo");
    bool found = false;
    std::string key;
    for (uint64_t kib = 0; meminfo >> key >> kib; meminfo.ignore(256, '\n')) {
        if (key == "MemAvailable:" || (key == "MemFree:" && !found)) {
            *bytes = kib * 1024;
            found = true;
        }
    }
    return found;
}

// The test's memory, locked where the system lets it be.
class test_buffer {
public:
    test_buffer() = default;
    test_buffer(const test_buffer&) = delete;
    test_buffer& operator=(const test_buffer&) = delete;
    ~test_buffer() {
        if (words)
            munmap(const_cast<uint64_t*>(words), count * sizeof(uint64_t));
    }

    // False, said why, when it cannot be had.
    bool allocate(uint64_t bytes) {
        const bool addressable = bytes <= std::numeric_limits<std::size_t>::max();
        count = static_cast<std::size_t>(bytes / sizeof(uint64_t));
        errno = ENOMEM;
        void* memory = addressable ? mmap(nullptr, count * sizeof(uint64_t), PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                                   : MAP_FAILED;
        if (memory == MAP_FAILED) {
            report("cannot allocate %s: %s", size_text(bytes).c_str(), std::strerror(errno));
            count = 0;
            return false;
        }
        words = static_cast<volatile uint64_t*>(memory);
        if (mlock(memory, count * sizeof(uint64_t)) != 0)
            report("cannot lock %s in memory (%s); testing it unlocked", size_text(bytes).c_str(),
                   std::strerror(errno));
        return true;
    }

    volatile uint64_t* words = nullptr;
    std::size_t count = 0;
};

// "3 9 17"
std::string bits_text(uint64_t bits) {
    std::string text;
    for (unsigned bit = 0; bit < 64; ++bit)
        if (bits >> bit & 1)
            text += (text.empty() ? "" : " ") + std::to_string(bit);
    return text;
}

class memory_test {
public:
    memory_test(const memtest_options& options, const bus_faults& faults, test_buffer& buffer)
        : steps(options.passes * options.patterns.size()),
          options(options),
          faults(faults),
          buffer(buffer),
          found(options.patterns.size()),
          progress(stderr, isatty(STDERR_FILENO), "pattern") {}

    // Every pass of every pattern; the stop signal that ended it early, or 0.
    int run(const stop_signals& stop) {
        int signal = 0;
        for (std::size_t step = 0; step < steps && !signal; ++step) {
            const std::size_t chosen = step % options.patterns.size();
            progress.show(options.patterns[chosen]->name, step + 1, steps);
            const std::vector<uint64_t> period =
                pattern_period(*options.patterns[chosen], options.width);
            // Written whole before any is read: the words come back from the
            // memory, not from the caches.
            signal = over_buffer(stop, [&](std::size_t from, std::size_t to) {
                write_pattern(buffer.words, from, to, period);
            });
            if (!signal)
                signal = over_buffer(stop, [&](std::size_t from, std::size_t to) {
                    compare_pattern(buffer.words, from, to, period, options.width, faults,
                                    &found[chosen]);
                });
            done = signal ? step : step + 1;
        }
        progress.clear();
        return signal;
    }

    // A line for each pattern compared; the bits that failed in any.
    uint64_t report_patterns() const {
        uint64_t failing = 0;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const comparison& seen = found[i];
            if (seen.words == 0)
                continue;
            failing |= seen.failing;
            if (seen.wrong_words == 0)
                report("%s: %zu words, none wrong", options.patterns[i]->name, seen.words);
            else
                report("%s: %zu words, %zu wrong; failing bits %s", options.patterns[i]->name,
                       seen.words, seen.wrong_words, bits_text(seen.failing).c_str());
        }
        return failing;
    }

    const std::size_t steps;  // passes of patterns
    std::size_t done = 0;

private:
    int over_buffer(const stop_signals& stop,
                    const std::function<void(std::size_t, std::size_t)>& piece) {
        for (std::size_t from = 0; from < buffer.count; from += piece_words) {
            piece(from, std::min(from + piece_words, buffer.count));
            if (const int signal = stop.take())
                return signal;
            const auto now = std::chrono::steady_clock::now();
            if (now - shown >= std::chrono::seconds(1)) {
                progress.refresh();
                shown = now;
            }
        }
        return 0;
    }

    const memtest_options& options;
    const bus_faults& faults;
    test_buffer& buffer;
    std::vector<comparison> found;  // for each pattern chosen
    progress_line progress;
    std::chrono::steady_clock::time_point shown = std::chrono::steady_clock::now();
};

// The failing-bits file: the bits' numbers, or nothing when none failed.
bool write_failing_bits(whole_file& file, const char* path, uint64_t failing) {
    if (failing)
        std::fprintf(file.stream(), "%s\n", bits_text(failing).c_str());
    if (file.commit())
        return true;
    report("cannot write %s: %s", path, std::strerror(errno));
    return false;
}

int test_memory(const memtest_options& options) {
    // Held from here on: a stop signal ends the test only once it has said
    // what it found.
    const stop_signals stop;
    uint64_t available = 0;
    if (!free_memory(&available)) {
        report("cannot tell the free memory from /proc/meminfo; nothing tested");
        return memtest_status::bad_input;
    }
    if (options.size > available) {
        report("--size %s is more than the free memory, %llu MiB; nothing tested",
               size_text(options.size).c_str(), static_cast<unsigned long long>(available >> 20));
        return memtest_status::bad_input;
    }
    bus_faults faults;
    if (!data_bus_faults(options.width, &faults))
        return memtest_status::bad_input;
    const char* bits_path = std::getenv("PADKIT_FAILING_BITS");
    if (bits_path && !*bits_path)
        bits_path = nullptr;
    whole_file bits_file;
    if (bits_path && !bits_file.open(bits_path)) {
        report("cannot write %s: %s; nothing tested", bits_path, std::strerror(errno));
        return memtest_status::bad_input;
    }
    test_buffer buffer;
    if (!buffer.allocate(options.size))
        return memtest_status::bad_input;
    memory_test test(options, faults, buffer);
    const int signal = test.run(stop);
    const uint64_t failing = test.report_patterns();
    if (signal) {
        // An unfinished test vouches for no bit: no file, and the signal says the rest.
        bits_file.discard();
        report("interrupted by %s after %zu of %zu patterns; no failing bits written",
               strsignal(signal), test.done, test.steps);
        stop_signals::die_of(signal);
    }
    report("%s, %u-bit bus: %s", size_text(options.size).c_str(), options.width,
           failing ? ("failing bits " + bits_text(failing)).c_str() : "no bit failed");
    if (bits_path && !write_failing_bits(bits_file, bits_path, failing))
        return failing ? memtest_status::failed : memtest_status::output_lost;
    return failing ? memtest_status::failed : memtest_status::ok;
}

int serve(int argc, char** argv) {
    memtest_options options;
    switch (parse_memtest_options(argc, argv, &options)) {
    case memtest_request::help: print_usage(stdout); return memtest_status::ok;
    case memtest_request::version:
        std::printf("%s %s\n", program_name(), PADKIT_VERSION);
        return memtest_status::ok;
    case memtest_request::bad: return memtest_status::bad_input;
    case memtest_request::run: break;
    }
    return test_memory(options);
}

}  // namespace

int padkit_memtest_main(int argc, char** argv) {
    set_program_name(argc > 0 ? argv[0] : nullptr);
    set_message_sink(report_line);
    set_usage_printer(print_memtest_usage);
    ignore_broken_pipe();
    return end_of_run(serve(argc, argv), {true, memtest_status::output_lost});
}
