#pragma once

// One wattscope capture: writes the periods of its sample source into the
// output file until its duration, the size limit, a stop, a write error or
// the source's failure. docs/simulator.md describes what it writes and when.
//
// Every figure of the summary and of progress() is of rows that reached the
// file: rows still in the write buffer count once a write took them.

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "engine/capture_file.h"
#include "engine/capture_settings.h"
#include "engine/function_table.h"
#include "engine/row_format.h"
#include "engine/sample_source.h"
#include "engine/stop_signal.h"

namespace standin::sim {

enum class capture_end { duration, size_limit, stopped, write_error, source_error };

// What a capture did, for its summary line and for tests.
struct capture_totals {
    capture_end end = capture_end::stopped;
    uint64_t rows = 0;       // Rows written, whether the window kept them or not.
    uint64_t rows_kept = 0;  // Rows in the file at the end.
    uint64_t periods = 0;    // Sample periods covered: rows and dropped samples.
    uint64_t dropped = 0;
    uint64_t clipped = 0;  // Rows whose current was cut to the full scale.
    double current_sum_na = 0;
    int64_t peak_na = 0;
    double energy_nj = 0;
    // With "ws+": what ran, by attribution (engine/function_marks.h), and
    // last the time nothing names.
    std::vector<function_figures> functions;
    std::string table;  // The function table's file, once written.
};

class capture {
  public:
    // Creates or empties the output file; null, with `error`, when it can't.
    // The capture owns the source from here on, and finishes it.
    static std::unique_ptr<capture> create(capture_settings settings,
                                           std::unique_ptr<sample_source> source,
                                           std::string& error);
    capture(const capture&) = delete;
    capture& operator=(const capture&) = delete;
    ~capture();

    // Lines for standard error before the capture starts: what the window
    // will drop, and a size cap too small for what was asked; or empty.
    std::string start_notes() const;

    // On the use case's thread; 0 when the capture ended by itself, 1 when
    // stopped, -1 on a write error or a failed source. Writes the summary
    // line to `out` and such an error to `errors`.
    int run(std::ostream& out, std::ostream& errors);

    // From any thread, at any time, any number of times.
    void stop() { stop_.request(); }

    const capture_totals& totals() const { return totals_; }

    // From any thread while run() runs: rows written so far, their current
    // sum and energy.
    struct progress_figures {
        uint64_t rows = 0;
        double current_sum_na = 0;
        double energy_nj = 0;
    };
    progress_figures progress() const {
        std::lock_guard<std::mutex> lock(progress_mutex_);
        return progress_;
    }

  private:
    // A row start remembered to cut the file at without reading all of it.
    struct checkpoint {
        uint64_t index;   // Sample index of the row.
        uint64_t offset;  // Where its row starts in the file.
        uint64_t row;     // How many rows came before it.
    };

    capture(capture_settings settings, std::unique_ptr<sample_source> source);

    capture_end sample_until_the_end();
    capture_end wait_for_the_stop();
    bool produce(uint64_t fresh, capture_end& end);
    bool write_block(capture_end& end);
    bool flush_rows();
    void commit_pending();
    void count_rows_that_reached_the_file(std::string_view text);
    void tally(const period_sample& s);
    bool write_function_table(std::ostream& errors);
    bool keep_the_window_in_the_background();
    void forget_before(const checkpoint& cut);
    bool windowed() const { return !settings_.save_all && file_.regular(); }
    void skip(uint64_t count);
    void finish_source();
    bool trim_to_window(uint64_t keep_from);
    bool worth_trimming_for_room() const;
    uint64_t window_start() const;

    const capture_settings settings_;
    stop_signal stop_;  // Other threads touch only this and the progress.
    mutable std::mutex progress_mutex_;
    progress_figures progress_;  // Guarded by progress_mutex_.

    // Everything below belongs to the thread in run().
    // The source is made on the main thread and used here; the destructor
    // finishes it when run() never did.
    std::unique_ptr<sample_source> source_;
    bool finished_ = false;
    capture_file file_;
    std::string header_;
    row_layout layout_;
    std::vector<std::string> attributions_;  // Names of what rows ran, with "ws+".
    // The shares of the periods in block_, from share_at_ on.
    std::span<const period_share> shares_;
    size_t share_at_ = 0;
    size_t row_room_ = 0;
    uint64_t window_samples_ = 0;
    uint64_t checkpoint_step_ = 0;

    uint64_t next_ = 0;  // Index of the next sample.
    sample_time time_;
    int64_t energy_nj_ = 0;
    int64_t energy_rest_ = 0;  // nW-periods not yet a whole nJ: 0 to rate - 1.
    // Periods taken from the source and not yet written: those that didn't
    // fit the file go first next time.
    std::vector<period_sample> block_;
    size_t block_at_ = 0;
    size_t block_end_ = 0;
    uint64_t first_index_ = 0;  // Of the first row in the file.
    uint64_t first_row_ = 0;    // Rows made before it.
    uint64_t rows_made_ = 0;    // Rows made, in the buffer or the file.
    std::deque<checkpoint> checkpoints_;
    checkpoint rewrite_from_{};  // Where a rewrite on another thread cuts.
    capture_totals pending_;     // Of the rows in the write buffer.
    capture_totals totals_;      // Of the rows that reached the file.
};

std::string capture_summary(const capture_settings& settings, const capture_totals& totals,
                            const clip_advice& clipping);

}  // namespace standin::sim
