#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <grp.h>
#include <iostream>
#include <seccomp.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// Runs the command of a service unit as systemd would: by an unprivileged user without
// capabilities, under the limits and the system-call filter that the unit asks for. Shows on
// machines where systemd does not run that the program lives under them. Needs root.
//
// usage: confined UNIT_FILE INSTANCE

namespace {

using Words = std::vector<std::string>;

constexpr uid_t unprivilegedUser = 65534;

void require(bool done, const std::string& what) {
    if (!done)
        throw std::runtime_error(what + ": " + std::strerror(errno));
}

/// What follows `key`= on all lines of the unit, specifiers of the instance filled in.
Words values(const std::string& unit, const std::string& key, const std::string& instance) {
    std::ifstream file(unit);
    require(file.is_open(), unit);
    Words found;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(key + "="))
            continue;
        std::istringstream words(line.substr(key.size() + 1));
        for (std::string word; words >> word;) {
            const auto specifier = word.find("%i");
            if (specifier != std::string::npos)
                word.replace(specifier, 2, instance);
            found.push_back(word);
        }
    }
    return found;
}

void limit(decltype(RLIMIT_NOFILE) resource, const Words& value, const std::string& key) {
    if (value.size() != 1)
        throw std::runtime_error("the unit must set " + key + " once");
    const rlim_t most = std::stoul(value.front());
    const rlimit limits = {most, most};
    require(setrlimit(resource, &limits) == 0, key);
}

void allow(scmp_filter_ctx filter, const std::string& name) {
    const int call = seccomp_syscall_resolve_name(name.c_str());
    if (call == __NR_SCMP_ERROR)
        throw std::runtime_error("SystemCallFilter names no system call: " + name);
    int status = 0;
    if (name == "socket") {
        // RestrictAddressFamilies=AF_INET
        status = seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 1, SCMP_A0(SCMP_CMP_EQ, AF_INET));
    } else if (name == "mprotect") {
        // MemoryDenyWriteExecute=yes
        status = seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 1,
                                  SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
    } else {
        status = seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0);
    }
    if (status != 0)
        throw std::runtime_error("no rule for " + name + ": " + std::strerror(-status));
}

/// Kills the process on any other system call.
void filterSystemCalls(const Words& allowed) {
    if (allowed.empty())
        throw std::runtime_error("the unit has no SystemCallFilter");
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_KILL_PROCESS);
    for (const std::string& name : allowed)
        allow(filter, name);
    const int status = seccomp_load(filter);
    if (status != 0)
        throw std::runtime_error(std::string("seccomp_load: ") + std::strerror(-status));
}

void dropPrivileges() {
    for (int capability = 0; prctl(PR_CAPBSET_READ, capability) >= 0; ++capability)
        require(prctl(PR_CAPBSET_DROP, capability) == 0, "PR_CAPBSET_DROP");
    require(setgroups(0, nullptr) == 0, "setgroups");
    require(setresgid(unprivilegedUser, unprivilegedUser, unprivilegedUser) == 0, "setresgid");
    require(setresuid(unprivilegedUser, unprivilegedUser, unprivilegedUser) == 0, "setresuid");
    require(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0, "PR_SET_NO_NEW_PRIVS");
}

[[noreturn]] void run(const std::string& unit, const std::string& instance) {
    Words command = values(unit, "ExecStart", instance);
    if (command.empty())
        throw std::runtime_error(unit + " has no ExecStart");
    const Words allowed = values(unit, "SystemCallFilter", instance);
    limit(RLIMIT_NOFILE, values(unit, "LimitNOFILE", instance), "LimitNOFILE");
    limit(RLIMIT_CORE, values(unit, "LimitCORE", instance), "LimitCORE");
    umask(static_cast<mode_t>(std::stoul(values(unit, "UMask", instance).at(0), nullptr, 8)));
    dropPrivileges();
    std::vector<char*> arguments;
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    filterSystemCalls(allowed);
    execve(arguments.front(), arguments.data(), environ);
    require(false, command.front());
    std::abort();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " UNIT_FILE INSTANCE\n";
        return 2;
    }
    try {
        run(argv[1], argv[2]);
    } catch (const std::exception& problem) {
        std::cerr << "confined: " << problem.what() << "\n";
        return 1;
    }
}
