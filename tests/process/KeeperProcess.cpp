#include "tests/process/KeeperProcess.h"

#include "tests/process/ServerProcess.h"
#include "tests/support/Arenas.h"
#include "tests/support/Courts.h"
#include "tests/support/SdkStandIn.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <httplib.h>

namespace {

constexpr char agonesVariable[] = "AGONES_SDK_HTTP_PORT";

int occurrences(const std::string& words, const std::string& text) {
    int times = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1))
        ++times;
    return times;
}

} // namespace

KeeperProcess::KeeperProcess(const std::string& options, int agonesPort,
                             const std::string& serverScript)
    : port_(freePort()), metricsPort_(freeTcpPort()) {
    namespace fs = std::filesystem;
    const std::string server = folder_.path + "/drench-server";
    fs::copy_file(DRENCH_SERVER, server);
    fs::create_directory(folder_.path + "/Resources");
    folder_.write("Resources/mapdata", arenaText(32, 16, 32, solidInRing));
    std::string started = server;
    if (!serverScript.empty()) {
        started = folder_.write("script", "#!/bin/bash\n" + serverScript);
        fs::permissions(started, fs::perms::owner_all);
    }
    if (agonesPort != 0)
        setenv(agonesVariable, std::to_string(agonesPort).c_str(), 1);
    process_.emplace(DRENCH_KEEPER, std::to_string(port_) + " --server " + started + " --metrics " +
                                        std::to_string(metricsPort_) +
                                        (options.empty() ? "" : " " + options));
    unsetenv(agonesVariable);
}

std::string KeeperProcess::metricsText() const {
    httplib::Client client("127.0.0.1", metricsPort_);
    const auto answer = client.Get("/metrics");
    return answer && answer->status == 200 ? answer->body : "";
}

std::optional<double> KeeperProcess::metric(const std::string& name) const {
    const std::string text = "\n" + metricsText();
    const std::size_t at = text.find("\n" + name + " ");
    if (at == std::string::npos)
        return std::nullopt;
    return std::stod(text.substr(at + name.size() + 2));
}

bool KeeperProcess::shows(const std::string& name, double value) const {
    return comesTrue([&] { return metric(name) == value; });
}

bool KeeperProcess::answers() const {
    return shows("drench_room_answering", 1.0);
}

bool KeeperProcess::says(const std::string& words, int times) const {
    return comesTrue([&] { return occurrences(words, out()) >= times; });
}

int KeeperProcess::serverPid() const {
    const std::string pid = std::to_string(process_->pid());
    std::ifstream children("/proc/" + pid + "/task/" + pid + "/children");
    int child = -1;
    children >> child;
    return child;
}
