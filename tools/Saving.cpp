#include "tools/Saving.h"

#include "arena/ArenaFile.h"
#include "arena/MapText.h"

namespace drench {

std::string arenaTextOf(const std::string& file) {
    return file.empty() ? "" : arena::writeMapText(arena::readWholeArena(file).text.map);
}

Saving::Saving(const std::string& path, const client::RecordingHeader& header) {
    if (!path.empty())
        writer_ = std::make_unique<client::RecordingWriter>(path, header, client::Clock::now());
}

client::LineTap Saving::tap() {
    if (!writer_)
        return {};
    return [this](client::Way way, std::uint32_t line, std::string_view datagram,
                  client::Time now) { writer_->take(way, line, datagram, now); };
}

void Saving::tellProblem(Console& console) {
    if (!writer_ || hasTold_)
        return;
    const std::string problem = writer_->problem();
    hasTold_ = !problem.empty();
    if (hasTold_)
        console.note(problem);
}

bool Saving::finish(Console& console) {
    if (!writer_)
        return true;
    const bool isWhole = writer_->finish().empty();
    tellProblem(console);
    return isWhole;
}

} // namespace drench
