#include "game/VideoFile.h"

#include "common/Files.h"
#include "game/sound/Tones.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace drench::game {

namespace {

/// Of H.264, from 0 for perfect to 51: what an eye hardly tells from the frames.
constexpr char quality[] = "20";

constexpr char soundBits[] = "160k";

[[noreturn]] void failWithReason(const std::string& what) {
    throw InputError(what + ": " + std::strerror(errno));
}

std::vector<std::string> ffmpegWords(const std::string& ffmpeg, const std::string& file, int width,
                                     int height, int rate) {
    return {ffmpeg, "-hide_banner", "-loglevel", "error", "-y",
            // The frames.
            "-f", "rawvideo", "-pixel_format", "rgb24", "-video_size",
            std::to_string(width) + "x" + std::to_string(height), "-framerate",
            std::to_string(rate), "-i", "-",
            // The sound.
            "-f", "s16le", "-ar", std::to_string(sampleRate), "-ac", "2", "-i",
            "/dev/fd/" + std::to_string(ChildProcess::furtherNumber),
            // No date of making, so that equal frames make equal files.
            "-map_metadata", "-1", "-fflags", "+bitexact", "-c:v", "libx264", "-crf", quality,
            "-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a", soundBits, "-movflags", "+faststart",
            "-f", "mp4", file};
}

} // namespace

SoundTrack::SoundTrack() : file_(std::tmpfile()) {
    if (!file_)
        failWithReason("there is no place for the sound");
}

void SoundTrack::add(std::span<const float> samples) {
    std::array<std::int16_t, 1024> block;
    while (!samples.empty()) {
        const std::span<const float> part = samples.first(std::min(samples.size(), block.size()));
        std::transform(part.begin(), part.end(), block.begin(), [](float sample) {
            return static_cast<std::int16_t>(std::lround(sample * 32767.0f));
        });
        std::fwrite(block.data(), sizeof block[0], part.size(), file_.get());
        samples = samples.subspan(part.size());
    }
}

int SoundTrack::finish() {
    if (std::fflush(file_.get()) != 0 || std::ferror(file_.get()) != 0)
        failWithReason("there is no place for the sound");
    return fileno(file_.get());
}

VideoFile::VideoFile(std::string path, int width, int height, int rate, int sound)
    : path_(path), file_(std::move(path)) {
    const std::string ffmpeg = programNamed("ffmpeg");
    if (ffmpeg.empty())
        throw InputError("ffmpeg is not installed, and makes the videos: apt-get install ffmpeg");
    // Its end is told by what is written to it.
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        failWithReason("there is no way to ffmpeg");
    const Descriptor out(ends[0]);
    frames_.emplace(ends[1]);
    ffmpeg_.emplace(ffmpegWords(ffmpeg, file_.name(), width, height, rate),
                    ChildProcess::Streams{.input = out.number, .further = sound});
}

void VideoFile::failEnded() {
    frames_.reset();
    throw InputError(path_ + ": ffmpeg could not make it and ended with status " +
                     std::to_string(ffmpeg_->wait()));
}

void VideoFile::add(const arena::Image& frame) {
    const auto* bytes = reinterpret_cast<const char*>(frame.pixels.data());
    std::size_t left = frame.pixels.size() * sizeof frame.pixels[0];
    while (left > 0) {
        const ssize_t count = write(frames_->number, bytes, left);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            failEnded();
        bytes += count;
        left -= static_cast<std::size_t>(count);
    }
}

void VideoFile::finish() {
    frames_.reset();
    if (ffmpeg_->wait() != 0)
        failEnded();
    file_.finish();
}

} // namespace drench::game
