#include "engine/capture.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <thread>
#include <unordered_map>

#include "common/atomic_file.h"
#include "common/text_input.h"
#include "engine/function_marks.h"

namespace standin::sim {

namespace {

constexpr uint64_t chunk_samples = 4096;
constexpr auto tick = std::chrono::milliseconds(50);
constexpr auto flush_period = std::chrono::milliseconds(250);
// zelno's clock starts a moment apart from ours, more under load.
constexpr auto stop_grace = std::chrono::milliseconds(250);

}  // namespace

capture::capture(capture_settings settings, std::unique_ptr<sample_source> source)
    : settings_(std::move(settings)),
      source_(std::move(source)),
      layout_(make_row_layout(settings_.gnuplot, settings_.trace_plus, source_->averages(),
                              settings_.rate)),
      block_(chunk_samples) {
    layout_.program_counters = source_->samples_program_counters();
    if (settings_.trace_plus) {
        attributions_ = attribution_names(settings_.board);
    }
    size_t longest_name = 1;
    for (const std::string& name : attributions_) {
        longest_name = std::max(longest_name, name.size());
    }
    row_room_ = max_row_size + longest_name;
    window_samples_ =
        static_cast<uint64_t>(settings_.window_ms) * static_cast<uint64_t>(settings_.rate) / 1000;
    window_samples_ = std::max<uint64_t>(window_samples_, 1);
    checkpoint_step_ =
        settings_.save_all ? UINT64_MAX : std::max<uint64_t>(window_samples_ / 64, 1);
    if (settings_.trace_plus) {
        totals_.functions.assign(attributions_.size() + 1, {});
        pending_.functions = totals_.functions;
    }
    header_ = capture_header(layout_, source_->describe(settings_.trace_plus ? "ws+" : "ws"));
}

capture::~capture() {
    finish_source();
}

std::unique_ptr<capture> capture::create(capture_settings settings,
                                         std::unique_ptr<sample_source> source,
                                         std::string& error) {
    std::unique_ptr<capture> made(new capture(std::move(settings), std::move(source)));
    if (!made->file_.open(made->settings_.output, error)) {
        return nullptr;
    }
    if (!made->windowed()) {
        made->checkpoint_step_ = UINT64_MAX;
    }
    return made;
}

void capture::finish_source() {
    if (!finished_) {
        finished_ = true;
        source_->finish();
    }
}

int capture::run(std::ostream& out, std::ostream& errors) {
    char* header = file_.space(header_.size());
    std::memcpy(header, header_.data(), header_.size());
    file_.advance(header + header_.size());
    checkpoints_.push_back({0, header_.size(), 0});

    capture_end end = file_.begin() ? sample_until_the_end() : capture_end::write_error;
    // The device stops before the file's last cut, which may take a while.
    finish_source();
    file_.cancel_rewrite();  // The last cut is exact; one under way would keep too much.
    if (end != capture_end::write_error) {
        const bool kept = flush_rows() && (!windowed() || trim_to_window(window_start()));
        if (!kept) {
            end = capture_end::write_error;
        }
    }
    totals_.end = end;
    totals_.rows_kept = totals_.rows - first_row_;
    if (end == capture_end::write_error) {
        errors << "wattscope: " << file_.error() << std::endl;
    } else if (end == capture_end::source_error) {
        errors << "wattscope: " << source_->failure() << std::endl;
    }
    const bool table_written = write_function_table(errors);
    out << capture_summary(settings_, totals_, source_->clipping()) << std::flush;
    switch (end) {
        case capture_end::duration:
        case capture_end::size_limit:
            return table_written ? 0 : -1;
        case capture_end::stopped:
            return table_written ? 1 : -1;
        case capture_end::write_error:
        case capture_end::source_error:
            break;
    }
    return -1;
}

// Beside a regular capture file only: a FIFO's or a device's neighbour is
// no place for it. True unless the write failed.
bool capture::write_function_table(std::ostream& errors) {
    if (!settings_.trace_plus || !file_.regular() || totals_.end == capture_end::write_error) {
        return true;
    }
    const std::string path = function_table_path(settings_.output);
    std::string error;
    if (!write_file_atomically(path, function_table_csv(attributions_, totals_.functions), error)) {
        errors << "wattscope: " << error << std::endl;
        return false;
    }
    totals_.table = path;
    return true;
}

capture_end capture::sample_until_the_end() {
    if (stop_.requested()) {
        return capture_end::stopped;
    }
    const clock::time_point begun = clock::now();
    const bool limited = settings_.duration_ms > 0;
    const auto duration = std::chrono::milliseconds(settings_.duration_ms);
    // With a duration zelno holds the same limit, by its own clock started a
    // moment apart from ours, and stops the capture at it. A stop from then
    // on is that one: the capture still takes its whole duration from the
    // trigger, and waits for that stop before it returns, so that zelno's
    // "Stopping" line always comes before the summary.
    // A further stop while closing is Ctrl+C after the limit: it ends the
    // capture at once, as any stop before the limit does.
    bool closing = false;
    uint32_t stops_before_closing = 0;
    auto is_the_limit = [&](clock::time_point now) {
        return limited && now >= begun + duration - stop_grace;
    };
    auto stopped_again = [&] { return closing && stop_.count() > stops_before_closing; };
    const uint64_t limit = limited ? static_cast<uint64_t>(settings_.duration_ms) *
                                         static_cast<uint64_t>(settings_.rate) / 1000
                                   : UINT64_MAX;
    source_->start(begun);
    clock::time_point last_flush = begun;

    while (true) {
        // Read before the clock: after a stop, what was due by then still comes.
        const bool stop_seen = (!closing && stop_.requested()) || stopped_again();
        const clock::time_point now = clock::now();
        if (stop_seen && !closing && is_the_limit(now)) {
            closing = true;
            stops_before_closing = stop_.count();
        }
        capture_end end = capture_end::size_limit;
        if (!produce(0, end)) {  // What didn't fit last time comes before anything newer.
            return end;
        }
        // A source with gaps tells one run of periods at a time.
        for (sample_source::ready_periods got = source_->poll(now);
             (got.lost != 0 || got.ready != 0) && next_ < limit; got = source_->poll(now)) {
            skip(std::min(got.lost, limit - next_));
            if (!produce(std::min(got.ready, limit - next_), end)) {
                return end;
            }
        }
        if (!source_->failure().empty()) {
            return flush_rows() ? capture_end::source_error : capture_end::write_error;
        }
        if (next_ == limit) {
            return wait_for_the_stop();
        }
        if (stop_seen && (!closing || stopped_again())) {
            return capture_end::stopped;
        }
        if (now - last_flush >= flush_period) {
            if (!flush_rows() || !file_.still_there()) {
                return capture_end::write_error;
            }
            last_flush = now;
        }
        if (windowed() && !keep_the_window_in_the_background()) {
            return capture_end::write_error;
        }
        const clock::time_point wake =
            std::min(std::max(now + tick, source_->next_ready_at()), last_flush + flush_period);
        stop_.sleep_until(wake, closing ? stops_before_closing : 0);
    }
}

capture_end capture::wait_for_the_stop() {
    if (!flush_rows()) {
        return capture_end::write_error;
    }
    while (!stop_.requested()) {
        stop_.sleep_until(clock::now() + std::chrono::seconds(1));
    }
    return capture_end::duration;
}

// Takes `fresh` periods from the source, a block at a time, behind those
// still in the block.
bool capture::produce(uint64_t fresh, capture_end& end) {
    while (true) {
        if (block_at_ == block_end_) {
            if (fresh == 0) {
                return true;
            }
            const auto count = static_cast<size_t>(std::min<uint64_t>(fresh, chunk_samples));
            source_->take(block_.data(), count);
            shares_ = source_->shares();
            share_at_ = 0;
            block_at_ = 0;
            block_end_ = count;
            fresh -= count;
        }
        if (!write_block(end)) {
            return false;
        }
    }
}

// Writes what is left of the block; at the size limit either trims the file
// to the window and goes on, or ends the capture.
bool capture::write_block(capture_end& end) {
    const int64_t rate = settings_.rate;
    const double per_rate = 1.0 / static_cast<double>(rate);
    const size_t count = block_end_ - block_at_;
    if (!file_.has_room(count * row_room_) && !flush_rows()) {
        end = capture_end::write_error;
        return false;
    }
    char* const begin = file_.space(count * row_room_);
    const uint64_t base = file_.size();
    const uint64_t room =
        settings_.max_bytes > static_cast<int64_t>(base) ? settings_.max_bytes - base : 0;
    char* row = begin;
    int64_t current_sum = 0;
    uint64_t clipped = 0;
    bool full = false;
    // Averaged rows keep the period's peak apart, so that averaging hides none.
    const bool averaged = source_->averages();
    for (; block_at_ < block_end_; ++block_at_) {
        const period_sample& s = block_[block_at_];
        // Whole nJ of the energy so far; a multiplication guesses the
        // quotient, as a division per row costs more than the rest of it.
        int64_t rest = energy_rest_ + s.power_nw;
        int64_t whole = static_cast<int64_t>(static_cast<double>(rest) * per_rate);
        rest -= whole * rate;
        while (rest < 0) {
            --whole;
            rest += rate;
        }
        while (rest >= rate) {
            ++whole;
            rest -= rate;
        }
        char* row_end = put_row(row, layout_, next_, time_, s, energy_nj_ + whole);
        if (settings_.trace_plus) {
            row_end =
                put_trace(row_end, layout_, s.pc,
                          s.function == no_function ? std::string_view("-")
                                                    : std::string_view(attributions_[s.function]));
        }
        *row_end++ = '\n';
        if (static_cast<uint64_t>(row_end - begin) > room) {
            full = true;
            break;
        }
        if (next_ - checkpoints_.back().index >= checkpoint_step_) {
            checkpoints_.push_back({next_, base + static_cast<uint64_t>(row - begin), rows_made_});
        }
        energy_nj_ += whole;
        energy_rest_ = rest;
        current_sum += s.current_na;
        clipped += s.clipped ? 1 : 0;
        pending_.peak_na = std::max(pending_.peak_na, averaged ? s.max_na : s.current_na);
        if (settings_.trace_plus) {
            tally(s);
        }
        ++pending_.rows;
        ++rows_made_;
        ++next_;
        if (++time_.tick == static_cast<uint64_t>(rate)) {
            time_.tick = 0;
            ++time_.second;
        }
        row = row_end;
    }
    file_.advance(row);
    pending_.current_sum_na += static_cast<double>(current_sum);
    pending_.clipped += clipped;
    if (full) {
        if (!worth_trimming_for_room()) {
            end = capture_end::size_limit;
            return false;
        }
        if (!trim_to_window(window_start())) {
            end = capture_end::write_error;
            return false;
        }
    }
    return true;
}

// A period to what it ran, or split between what its shares ran.
void capture::tally(const period_sample& s) {
    const size_t unnamed = attributions_.size();
    auto at = [&](uint32_t function) -> function_figures& {
        return pending_.functions[function == no_function ? unnamed : function];
    };
    if (s.shares == 0) {
        const auto per_rate = 1.0 / static_cast<double>(settings_.rate);
        at(s.function) += {1, per_rate, static_cast<double>(s.current_na) * per_rate,
                           static_cast<double>(s.power_nw) * per_rate};
        return;
    }
    for (uint32_t i = 0; i < s.shares && share_at_ < shares_.size(); ++i, ++share_at_) {
        const period_share& share = shares_[share_at_];
        at(share.function) += {share.samples, share.seconds, share.charge_nc, share.energy_nj};
    }
}

void capture::skip(uint64_t count) {
    next_ += count;
    totals_.dropped += count;
    time_.second = next_ / static_cast<uint64_t>(settings_.rate);
    time_.tick = next_ % static_cast<uint64_t>(settings_.rate);
}

uint64_t capture::window_start() const {
    return next_ > window_samples_ ? next_ - window_samples_ : 0;
}

// At the size limit, dropping rows older than the window is worth a rewrite
// of the file only when it frees an eighth of the limit; otherwise the
// capture ends there, as with saveall.
bool capture::worth_trimming_for_room() const {
    if (!windowed()) {
        return false;
    }
    const uint64_t keep_from = window_start();
    uint64_t freed = 0;
    for (const checkpoint& point : checkpoints_) {
        if (point.index <= keep_from) {
            freed = point.offset - header_.size();
        }
    }
    return freed >= static_cast<uint64_t>(settings_.max_bytes) / 8;
}

bool capture::trim_to_window(uint64_t keep_from) {
    if (keep_from <= first_index_ || rows_made_ == first_row_) {
        return true;
    }
    if (!flush_rows()) {
        return false;
    }
    checkpoint from = checkpoints_.front();
    for (const checkpoint& point : checkpoints_) {
        if (point.index <= keep_from) {
            from = point;
        }
    }
    // Walk the rows from there; each starts with its sample index.
    uint64_t cut = file_.size();
    uint64_t cut_index = next_;
    uint64_t row = rows_made_;
    std::vector<char> block(65536);
    uint64_t position = from.offset;
    uint64_t counted = from.row;
    bool found = false;
    while (!found) {
        const size_t got = file_.read_at(position, block.data(), block.size());
        if (got == 0) {
            break;
        }
        size_t at = 0;
        while (true) {
            const void* newline = std::memchr(block.data() + at, '\n', got - at);
            if (newline == nullptr) {
                break;
            }
            uint64_t index = 0;
            for (size_t i = at; block[i] >= '0' && block[i] <= '9'; ++i) {
                index = index * 10 + static_cast<uint64_t>(block[i] - '0');
            }
            if (index >= keep_from) {
                cut = position + at;
                cut_index = index;
                row = counted;
                found = true;
                break;
            }
            ++counted;
            at = static_cast<size_t>(static_cast<const char*>(newline) - block.data()) + 1;
        }
        if (at == 0) {
            break;  // No whole row in a block: can't be a file of ours.
        }
        position += at;
    }
    if (!file_.drop_range(header_.size(), cut)) {
        return false;
    }
    forget_before({cut_index, cut, row});
    return true;
}

void capture::forget_before(const checkpoint& cut) {
    const uint64_t shift = cut.offset - header_.size();
    while (!checkpoints_.empty() && checkpoints_.front().index <= cut.index) {
        checkpoints_.pop_front();
    }
    for (checkpoint& point : checkpoints_) {
        point.offset -= shift;
    }
    checkpoints_.push_front({cut.index, header_.size(), cut.row});
    first_index_ = cut.index;
    first_row_ = cut.row;
}

// While sampling, rows older than the window go a quarter window at a time,
// through a rewrite on another thread, cut at a remembered row start: found
// without reading the file, it keeps up to a sixty-fourth of a window more.
bool capture::keep_the_window_in_the_background() {
    if (file_.rewriting()) {
        bool replaced = false;
        if (!file_.poll_rewrite(replaced)) {
            return false;
        }
        if (replaced) {
            forget_before(rewrite_from_);
        }
        return true;
    }
    const uint64_t keep_from = window_start();
    if (keep_from < first_index_ + std::max<uint64_t>(window_samples_ / 4, 1)) {
        return true;
    }
    checkpoint from = checkpoints_.front();
    for (const checkpoint& point : checkpoints_) {
        if (point.index <= keep_from) {
            from = point;
        }
    }
    if (from.index <= first_index_ || from.offset > file_.written()) {
        return true;
    }
    rewrite_from_ = from;
    return file_.start_rewrite(header_.size(), from.offset);
}

bool capture::flush_rows() {
    const uint64_t before = file_.written();
    if (file_.flush()) {
        commit_pending();
        return true;
    }
    count_rows_that_reached_the_file(file_.buffered(file_.written() - before));
    return false;
}

void capture::commit_pending() {
    totals_.rows += pending_.rows;
    totals_.current_sum_na += pending_.current_sum_na;
    totals_.clipped += pending_.clipped;
    totals_.peak_na = std::max(totals_.peak_na, pending_.peak_na);
    for (size_t i = 0; i < pending_.functions.size(); ++i) {
        totals_.functions[i] += pending_.functions[i];
        pending_.functions[i] = {};
    }
    totals_.periods = next_;
    totals_.dropped = source_->lost_device_samples().value_or(next_ - totals_.rows);
    totals_.energy_nj = static_cast<double>(energy_nj_) +
                        static_cast<double>(energy_rest_) / static_cast<double>(settings_.rate);
    pending_.rows = 0;
    pending_.clipped = 0;
    pending_.current_sum_na = 0;
    pending_.peak_na = 0;
    std::lock_guard<std::mutex> lock(progress_mutex_);
    progress_ = {totals_.rows, totals_.current_sum_na, totals_.energy_nj};
}

// After a failed write: the figures of the rows that reached the file from
// the buffer, read back from their text; the rest of the buffer is lost.
void capture::count_rows_that_reached_the_file(std::string_view text) {
    const char separator = layout_.separator;
    std::unordered_map<std::string_view, size_t> function_index;  // A board may list many.
    for (size_t f = 0; f < attributions_.size(); ++f) {
        function_index.emplace(attributions_[f], f);
    }
    function_index.emplace("-", attributions_.size());
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        end = end == std::string_view::npos ? text.size() : end;
        const std::string_view line = text.substr(at, end - at);
        at = end + 1;
        if (line.empty() || line[0] < '0' || line[0] > '9') {
            continue;  // The header.
        }
        std::vector<std::string_view> fields;
        for (size_t from = 0; from <= line.size();) {
            size_t to = line.find(separator, from);
            to = to == std::string_view::npos ? line.size() : to;
            fields.push_back(line.substr(from, to - from));
            from = to + 1;
        }
        if (fields.size() < 7) {
            continue;
        }
        const int64_t current = parse_fixed(fields[2], 9).value_or(0);
        const int64_t power = parse_fixed(fields[4], 9).value_or(0);
        ++totals_.rows;
        totals_.clipped += fields[6] == "1" ? 1 : 0;
        totals_.current_sum_na += static_cast<double>(current);
        totals_.peak_na = std::max(totals_.peak_na, current);
        totals_.energy_nj = static_cast<double>(parse_fixed(fields[5], 9).value_or(0));
        uint64_t index = 0;
        std::from_chars(fields[0].data(), fields[0].data() + fields[0].size(), index);
        totals_.periods = index + 1;
        if (layout_.trace_plus && fields.size() == column_count(layout_)) {
            // A split period counts whole for what held longest: its split is lost.
            if (const auto found = function_index.find(fields.back());
                found != function_index.end()) {
                const auto per_rate = 1.0 / static_cast<double>(settings_.rate);
                totals_.functions[found->second] +=
                    {1, per_rate, static_cast<double>(current) * per_rate,
                     static_cast<double>(power) * per_rate};
            }
        }
    }
    totals_.dropped = totals_.periods - totals_.rows;
    std::lock_guard<std::mutex> lock(progress_mutex_);
    progress_ = {totals_.rows, totals_.current_sum_na, totals_.energy_nj};
}

}  // namespace standin::sim
