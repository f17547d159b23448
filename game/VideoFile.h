#pragma once

#include "arena/picture/Image.h"
#include "common/ChildProcess.h"
#include "common/Descriptor.h"
#include "common/Files.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace drench::game {

/// Stereo sound on its way into a video: a file without a name.
class SoundTrack {
  public:
    /// Throws InputError if the system gives no such file.
    SoundTrack();

    /// @param samples  left and right in turn, from -1 to 1, sampleRate frames a second
    void add(std::span<const float> samples);

    /// For another process to open once all was added. Throws InputError if the disk was full.
    int finish();

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_;
};

/// An MP4 file of H.264 and AAC that ffmpeg writes, frame by frame. The same frames and sound give
/// the same bytes with the same ffmpeg. Whatever was at its path stays until the video is whole.
class VideoFile {
  public:
    /// Throws InputError if ffmpeg is not installed or the file cannot be written.
    /// @param width,height  even numbers of pixels
    /// @param rate  frames a second
    /// @param sound  all of it: see SoundTrack::finish()
    VideoFile(std::string path, int width, int height, int rate, int sound);
    VideoFile(const VideoFile&) = delete;
    VideoFile& operator=(const VideoFile&) = delete;

    /// Throws InputError if ffmpeg has ended.
    void add(const arena::Image& frame);

    /// Puts the whole video at its path. Throws InputError if that fails.
    void finish();

  private:
    [[noreturn]] void failEnded();

    std::string path_;
    FileInMaking file_;
    std::optional<Descriptor> frames_;
    std::optional<ChildProcess> ffmpeg_;
};

} // namespace drench::game
