#include "execution/command_queue.h"

#include <algorithm>
#include <iostream>
#include <memory>

command_data_t::~command_data_t() {
    delete thread;
    delete runnable;
}

void command_queue::add(std::string name, zelno_command* command, int32_t duration) {
    std::unique_ptr<zelno_command> owned(command);
    auto entry = std::make_unique<command_data_t>();
    entry->name = std::move(name);
    entry->runnable = new command_runnable(owned.get());
    entry->command = owned.get();
    owned.release();
    entry->thread = new VX_UTL::uThread(entry->runnable, 0, 0);
    entry->duration = duration;

    VX_UTL::uMutexLock lock(mutex);
    entries.emplace(next_sequence, entry.get());
    entry.release();
    ++next_sequence;
}

bool command_queue::writes(const std::string& file,
                           bool (*same)(const std::string&, const std::string&)) const {
    return std::any_of(entries.begin(), entries.end(), [&](const auto& element) {
        return same(element.second->command->output_file(), file);
    });
}

std::vector<std::string> command_queue::start_all() {
    note_wait_begins(0);
    std::vector<std::string> not_started;
    for (const auto& [sequence, entry] : entries) {
        if (closed) {
            break;  // Never run, counted as failed, destroyed with the rest.
        }
        if (entry->runnable->status() == status_not_started && !entry->thread->start()) {
            // Never reaches run: stays at 0, is not waited for, counts as
            // failed and is destroyed with the rest.
            not_started.push_back(entry->name);
            continue;
        }
        entry->runnable->wait_while(status_not_started);
    }
    return not_started;
}

void command_queue::note_wait_begins(int32_t elapsed) {
    const VX_UTL::uMutexLock lock(mutex);
    elapsed_at_wait = elapsed;
    wait_began = std::chrono::steady_clock::now();
}

// The limits count the waits, not a clock; only how far the current wait has
// got is measured, to tell a Ctrl+C in the last moments of a limit.
bool command_queue::in_last_stretch(const command_data_t& entry) const {
    if (entry.duration <= 0) {
        return false;
    }
    const auto into_wait = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - wait_began);
    return entry.duration - elapsed_at_wait - into_wait.count() <= last_stretch_ms;
}

void command_queue::close() {
    closed = true;
    stop_all();
}

void command_queue::stop_all() {
    // Held across test and stop, so that the entry can't be destroyed between.
    VX_UTL::uMutexLock lock(mutex);
    for (const auto& [sequence, entry] : entries) {
        if (entry->runnable->status() == status_running &&
            (closed || entry->stopped_at_limit || !in_last_stretch(*entry))) {
            entry->stopped_by_user = true;
            entry->runnable->stop();
        }
    }
}

void command_queue::stop_at_limit(command_data_t& entry, int32_t elapsed) {
    if (observer != nullptr) {
        observer->quiet();
    }
    std::cout << "Stopping " << entry.name << " after " << elapsed << "ms" << std::endl;
    {
        const VX_UTL::uMutexLock lock(mutex);
        entry.stopped_at_limit = true;
    }
    entry.runnable->stop();
    entry.runnable->wait_while(status_running);
}

exit_status command_queue::wait_all() {
    // The sum of the waits made, not a clock: a wait that comes back early
    // still counts whole.
    int32_t elapsed = 0;
    // An entry that start_all started while close() went by is stopped here.
    if (closed) {
        stop_all();
    }
    for (;;) {
        uint32_t running = 0;
        int32_t wait = 0;
        command_data_t* chosen = nullptr;
        command_data_t* first_untimed = nullptr;
        for (const auto& [sequence, entry] : entries) {
            if (entry->runnable->status() != status_running) {
                continue;
            }
            ++running;
            if (entry->duration <= 0) {
                if (first_untimed == nullptr) {
                    first_untimed = entry;
                }
                continue;
            }
            if (elapsed >= entry->duration) {
                stop_at_limit(*entry, elapsed);
                continue;
            }
            const int32_t remaining = entry->duration - elapsed;
            if (chosen == nullptr || remaining < wait) {
                chosen = entry;
                wait = remaining;
            }
        }
        if (running == 0) {
            break;
        }
        if (observer != nullptr && (chosen != nullptr || first_untimed != nullptr)) {
            // Waits are cut to the observer's period; the limits still count
            // from the sum of the waits, so each stop lands where it did.
            report_running();
            if (chosen == nullptr) {
                first_untimed->thread->wait(wait_observer::period_ms);
                continue;
            }
            wait = std::min(wait, wait_observer::period_ms);
        }
        if (chosen != nullptr) {
            note_wait_begins(elapsed);
            chosen->thread->wait(static_cast<uint32_t>(wait));
            elapsed += wait;
        } else if (first_untimed != nullptr) {
            // Nothing with a limit runs any more, so passes until this entry
            // leaves 4 would find nothing to do: sleep through them instead.
            first_untimed->runnable->wait_while(status_running);
        }
    }
    if (observer != nullptr) {
        observer->done();
    }
    return clean_up();
}

void command_queue::report_running() {
    std::vector<running_use_case> running;
    for (const auto& [sequence, entry] : entries) {
        if (entry->runnable->status() == status_running) {
            running.push_back({entry->name, entry->duration, *entry->command});
        }
    }
    observer->update(running);
}

exit_status command_queue::clean_up() {
    // The status leaves 4 before the thread is done with its runnable, so
    // each thread is waited for before its entry goes.
    for (const auto& [sequence, entry] : entries) {
        entry->thread->wait(VX_UTL::uThread::infinite);
    }
    exit_status outcome = refused ? exit_refused : exit_all_passed;
    refused = false;
    VX_UTL::uMutexLock lock(mutex);
    for (const auto& [sequence, entry] : entries) {
        const uint32_t status = entry->runnable->status();
        outcome = worse(outcome, status == status_returned_0   ? exit_all_passed
                                 : status == status_returned_1 ? exit_test_failed
                                                               : exit_use_case_failed);
        if (entry->stopped_by_user) {
            outcome = worse(outcome, exit_use_case_failed);
        }
        delete entry;
    }
    entries.clear();
    return outcome;
}
