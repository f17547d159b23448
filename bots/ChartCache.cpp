#include "bots/ChartCache.h"

#include "bots/ChartFile.h"
#include "common/Checksum.h"
#include "common/Descriptor.h"
#include "common/Files.h"
#include "common/UserFolders.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace drench::bots {

namespace {

/// Microseconds from one look at a lock to the next: short beside the making of a chart.
constexpr useconds_t lockPeriod = 50'000;

/// Ends the making of a chart that nobody wants any more.
struct Stopped {};

std::string nameOf(const ChartOrigin& origin) {
    char name[32];
    std::snprintf(name, sizeof name, "%016llx.chart",
                  static_cast<unsigned long long>(origin.arena));
    return name;
}

std::optional<Roadmap> readKept(const std::string& file, const ChartOrigin& origin,
                                MapManager& map) {
    try {
        return readChart(readFile(file), origin, map);
    } catch (const InputError&) {
        return std::nullopt;
    }
}

/// Whether something lies there that is no file, as a pipe, which would hold up reader and writer.
bool isNoFile(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

/// Opens the lock file of a chart, and makes its folder if need be; negative if that fails.
int openLock(const std::string& file) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(file).parent_path(), ignored);
    return open((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

/// Waits for the lock, which its holder releases when it ends at the latest.
void awaitLock(const Descriptor& lock, const std::function<bool()>& goesOn,
               const std::function<void(const std::string&)>& tell) {
    while (flock(lock.number, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        if (!goesOn())
            throw Stopped();
        tell("waiting for another process that charts the arena");
        usleep(lockPeriod);
    }
}

Roadmap chartAnew(MapManager& map, const std::function<bool()>& goesOn,
                  const std::function<void(const std::string&)>& tell) {
    tell("charting the arena");
    return chart(map, [&](const char* stage, std::size_t places) {
        if (!goesOn())
            throw Stopped();
        tell("charting the arena: " + std::string(stage) + ", " + std::to_string(places) +
             " places");
    });
}

} // namespace

std::string chartFolder() {
    return userFolder("XDG_CACHE_HOME", ".cache");
}

std::uint64_t programChecksum() {
    try {
        return checksum(readFile("/proc/self/exe"));
    } catch (const InputError&) {
        return 0;
    }
}

std::optional<Roadmap> keptChart(MapManager& map, const std::string& folder, std::uint64_t program,
                                 const std::function<bool()>& goesOn,
                                 const std::function<void(const std::string&)>& tell) {
    try {
        if (folder.empty() || program == 0)
            return chartAnew(map, goesOn, tell);
        const ChartOrigin origin = {arenaChecksum(map), program};
        const std::string file = folder + '/' + nameOf(origin);
        if (isNoFile(file))
            return chartAnew(map, goesOn, tell);
        if (std::optional<Roadmap> kept = readKept(file, origin, map))
            return kept;
        const Descriptor lock(openLock(file));
        if (lock.number < 0)
            return chartAnew(map, goesOn, tell);
        awaitLock(lock, goesOn, tell);
        // The lock's former holder may have made the chart meanwhile.
        if (std::optional<Roadmap> kept = readKept(file, origin, map))
            return kept;
        Roadmap made = chartAnew(map, goesOn, tell);
        try {
            replaceFile(file, writeChart(made, origin));
        } catch (const InputError&) {
            // The chart is usable without its file; the next start makes it anew.
        }
        return made;
    } catch (const Stopped&) {
        return std::nullopt;
    }
}

} // namespace drench::bots
