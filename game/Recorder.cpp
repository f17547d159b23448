#include "game/Recorder.h"

#include "common/Files.h"
#include "game/OwnRecordings.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <utility>

namespace drench::game {

namespace {

constexpr char program[] = "drench " DRENCH_VERSION;

std::string nameOf(const std::string& file) {
    return std::filesystem::path(file).filename().string();
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
    if (writer_)
        writer_->take(way, 0, datagram, now);
}

double Recorder::seconds(Time now) const {
    return writer_ ? std::chrono::duration<double>(now - begin_).count() : 0.0;
}

void Recorder::toggle(const std::string& arena, Time now) {
    if (writer_) {
        end(now);
        return;
    }
    if (!recent_)
        return;
    try {
        file_ = newRecordingFile(folder_);
        writer_ = std::make_unique<client::RecordingWriter>(
            file_, client::headerNow(arena, room_, program), now);
        begin_ = now;
        news_.push_back("Recording.");
    } catch (const InputError& error) {
        news_.emplace_back(error.what());
    }
}

void Recorder::end(Time now) {
    if (!writer_)
        return;
    const auto length = std::chrono::duration_cast<client::RecordedTime>(now - begin_);
    ending_.push_back(std::async(
        std::launch::async, [writer = std::move(writer_), file = file_, length]() mutable {
            const std::string problem = writer->finish();
            return problem.empty() ? "Recorded " + lengthWords(length) + " as " + nameOf(file)
                                   : problem;
        }));
}

void Recorder::keepRecent(const std::string& arena) {
    if (!recent_)
        return;
    recent_->setArena(arena);
    ending_.push_back(
        std::async(std::launch::async, [bytes = recent_->recording(), folder = folder_] {
            try {
                const std::string file = newRecordingFile(folder);
                replaceFile(file, bytes);
                return "Kept the last two minutes as " + nameOf(file);
            } catch (const InputError& error) {
                return std::string(error.what());
            }
        }));
}

std::vector<std::string> Recorder::takeNews() {
    std::erase_if(ending_, [this](std::future<std::string>& each) {
        if (each.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return false;
        news_.push_back(each.get());
        return true;
    });
    if (writer_ && !writer_->problem().empty())
        end(begin_);
    return std::exchange(news_, {});
}

} // namespace drench::game
