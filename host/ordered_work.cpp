#include "ordered_work.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace host {

namespace {

// Files that may be waiting for their turn, per thread: what bounds the memory.
constexpr size_t slots_per_thread = 64;

// Threads meet once for several files as long as these take no more than this together; so a slow
// file is handed over alone.
constexpr size_t largest_batch = 16;
constexpr std::chrono::milliseconds batch_time(1);

// What the threads share, guarded by the mutex but for slots that a thread has taken.
struct Queue {
    const OrderedWork& work;
    unsigned threads;
    std::mutex mutex{};
    std::condition_variable has_files{};
    std::condition_variable has_room{};
    std::vector<Examined> ring{}; // by the file's index
    std::vector<Examined> shown_now{};
    size_t listed = 0;        // files that were put into the ring,
    size_t taken = 0;         // that a thread took from it
    size_t shown = 0;         // and that have left it
    size_t idle = 0;          // threads that wait for a file
    bool is_full = false;     // the lister waits for room
    bool is_showing = false;  // a thread does
    bool is_complete = false; // no more files will come
    bool is_stopped = false;  // nothing more can be shown
};

Examined& slot_of(Queue* queue, size_t index) {
    return queue->ring[index % queue->ring.size()];
}

// Takes the files that are ready and whose turn it is.
void take_ready(Queue* queue) {
    queue->shown_now.clear();
    while (slot_of(queue, queue->shown).is_ready) {
        queue->shown_now.push_back(std::exchange(slot_of(queue, queue->shown), Examined{}));
        ++queue->shown;
    }
    // The lister is woken for many files rather than for each.
    if (queue->is_full && queue->listed - queue->shown <= queue->ring.size() / 2) {
        queue->has_room.notify_one();
    }
}

// Whoever finishes the file whose turn it is shows it and all that are ready behind it.
void show_ready(Queue* queue, std::unique_lock<std::mutex>* lock) {
    if (queue->is_showing) {
        return;
    }
    queue->is_showing = true;
    for (take_ready(queue); !queue->shown_now.empty(); take_ready(queue)) {
        if (!queue->is_stopped) {
            lock->unlock();
            const bool goes_on = queue->work.show(queue->shown_now);
            lock->lock();
            queue->is_stopped = !goes_on;
        }
    }
    queue->is_showing = false;
}

struct Worker {
    Description description{};
    size_t batch = 1;
};

// Examines some of the files that wait, each thread its share of them, without the lock.
void examine_batch(Queue* queue, Worker* worker, std::unique_lock<std::mutex>* lock) {
    const size_t share = (queue->listed - queue->taken) / queue->threads;
    const size_t begin = queue->taken;
    const size_t end = begin + std::clamp<size_t>(share, 1, worker->batch);
    queue->taken = end;
    lock->unlock();
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = begin; i < end; ++i) {
        Examined& slot = slot_of(queue, i);
        slot.result = queue->work.examine(slot.file, &worker->description);
    }
    const bool is_slow = std::chrono::steady_clock::now() - start > batch_time;
    worker->batch = is_slow ? 1 : std::min(2 * worker->batch, largest_batch);
    lock->lock();
    for (size_t i = begin; i < end; ++i) {
        slot_of(queue, i).is_ready = true;
    }
    show_ready(queue, lock);
}

void work_on(Queue* queue) {
    Worker worker;
    std::unique_lock lock(queue->mutex);
    for (;;) {
        while (queue->taken != queue->listed) {
            examine_batch(queue, &worker, &lock);
        }
        if (queue->is_complete) {
            return;
        }
        ++queue->idle;
        queue->has_files.wait(lock);
        --queue->idle;
    }
}

// False when the system has no thread to give.
bool start_thread(Queue* queue, std::vector<std::thread>* threads) {
    try {
        threads->emplace_back(work_on, queue);
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

// Puts the file into the ring when there is room; false when the work has ended.
bool put(Queue* queue, const ListedFile& file, std::unique_lock<std::mutex>* lock) {
    queue->is_full = queue->listed - queue->shown == queue->ring.size();
    while (queue->is_full) {
        queue->has_room.wait(*lock);
        queue->is_full = queue->listed - queue->shown > queue->ring.size() / 2;
    }
    if (queue->is_stopped || queue->work.is_cancelled()) {
        return false;
    }
    slot_of(queue, queue->listed++).file = file;
    return true;
}

// Hands the files out and starts threads as they are needed.
void hand_out(Queue* queue, std::vector<std::thread>* threads) {
    size_t limit = queue->threads > 1 ? queue->threads : 0;
    Worker own;
    queue->work.list([&](const ListedFile& file) {
        std::unique_lock lock(queue->mutex);
        if (!put(queue, file, &lock)) {
            return false;
        }
        if (queue->idle != 0) {
            lock.unlock();
            queue->has_files.notify_one();
        } else if (threads->size() < limit && !start_thread(queue, threads)) {
            limit = 0;
        }
        if (threads->empty()) {
            examine_batch(queue, &own, &lock);
        }
        return true;
    });
}

} // namespace

void work_in_order(const OrderedWork& work, unsigned threads) {
    Queue queue{work, std::max(threads, 1U)};
    queue.ring.resize(queue.threads * slots_per_thread);
    std::vector<std::thread> started;
    hand_out(&queue, &started);
    {
        const std::lock_guard lock(queue.mutex);
        if (work.is_cancelled()) {
            queue.listed = queue.taken;
        }
        queue.is_complete = true;
    }
    queue.has_files.notify_all();
    for (std::thread& thread : started) {
        thread.join();
    }
}

} // namespace host
