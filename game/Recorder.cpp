#include "game/Recorder.h"

#include "common/Files.h"
#include "game/OwnRecordings.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace drench::game {

namespace {

constexpr char program[] = "drench " DRENCH_VERSION;

std::string nameOf(const std::string& file) {
    return std::filesystem::path(file).filename().string();
}

/// Has a new file in the folder filled by fill(file), and returns its name; leaves none behind if
/// that throws.
template<class Fill>
std::string makeFile(const std::string& folder, const Fill& fill) {
    std::string file = newRecordingFile(folder);
    try {
        fill(file);
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
        throw;
    }
    return file;
}

} // namespace

client::Tap Recorder::enter(const std::string& room, Time now) {
    if (!recent_ || room != room_) {
        leave(now);
        room_ = room;
        recent_.emplace(client::headerNow("", room, program), now, recentSpan);
    }
    return [this](client::Way way, std::string_view datagram, Time moment) {
        take(way, datagram, moment);
    };
}

void Recorder::leave(Time now) {
    end(now);
    recent_.reset();
}

void Recorder::take(client::Way way, std::string_view datagram, Time now) {
    if (recent_)
        recent_->take(way, 0, datagram, now);
    if (begun_.writer)
        begun_.writer->take(way, 0, datagram, now);
    else if (isRecording_)
        waiting_.push_back({way, std::string(datagram), now});
}

double Recorder::seconds(Time now) const {
    return isRecording_ ? std::chrono::duration<double>(now - begin_).count() : 0.0;
}

void Recorder::toggle(const std::string& arena, Time now) {
    if (isRecording_) {
        end(now);
        return;
    }
    if (!recent_)
        return;
    isRecording_ = true;
    begin_ = now;
    // To shrink a large arena takes longer than a frame may.
    beginning_ =
        std::async(std::launch::async, [folder = folder_,
                                        header = client::headerNow(arena, room_, program), now] {
            Begun begun;
            try {
                begun.file = makeFile(folder, [&](const std::string& file) {
                    begun.writer = std::make_unique<client::RecordingWriter>(file, header, now);
                });
            } catch (const std::exception& error) {
                begun.problem = error.what();
            }
            return begun;
        });
}

/// Waits until the file is begun.
void Recorder::takeBegun() {
    begun_ = beginning_.get();
    if (!begun_.writer) {
        isRecording_ = false;
        news_.push_back(begun_.problem);
    }
    for (const Waiting& each : std::exchange(waiting_, {})) {
        if (begun_.writer)
            begun_.writer->take(each.way, 0, each.datagram, each.moment);
    }
}

void Recorder::end(Time now) {
    if (beginning_.valid())
        takeBegun();
    if (!std::exchange(isRecording_, false))
        return;
    const auto length = std::chrono::duration<double>(now - begin_);
    ending_.push_back(std::async(std::launch::async, [begun = std::exchange(begun_, {}), length] {
        try {
            const std::string problem = begun.writer->finish();
            return problem.empty() ? "Recorded " + lengthWords(length) + " as " + nameOf(begun.file)
                                   : problem;
        } catch (const std::exception& error) {
            return std::string(error.what());
        }
    }));
}

void Recorder::keepRecent(const std::string& arena) {
    if (!recent_)
        return;
    ending_.push_back(std::async(std::launch::async, [recent = *recent_, arena,
                                                      folder = folder_]() mutable {
        try {
            recent.setArena(arena);
            const std::string recording = recent.recording();
            const std::string file =
                makeFile(folder, [&](const std::string& made) { replaceFile(made, recording); });
            return "Kept the last " + lengthWords(recent.duration()) + " as " + nameOf(file);
        } catch (const std::exception& error) {
            return std::string(error.what());
        }
    }));
}

std::vector<std::string> Recorder::takeNews() {
    const auto isReady = [](const auto& future) {
        return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    if (beginning_.valid() && isReady(beginning_)) {
        takeBegun();
        if (isRecording_)
            news_.push_back("Recording.");
    }
    if (begun_.writer && !begun_.writer->problem().empty())
        end(begin_);
    std::erase_if(ending_, [&](std::future<std::string>& each) {
        if (!isReady(each))
            return false;
        news_.push_back(each.get());
        return true;
    });
    return std::exchange(news_, {});
}

} // namespace drench::game
