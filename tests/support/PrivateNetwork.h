#ifndef PRIVATENETWORK_H
#define PRIVATENETWORK_H

#include <cerrno>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>

// Tests that send datagrams or connect beyond loopback run only in the
// private network namespace of scripts/private-network.sh, which nothing
// sent can leave. Whether this is it is told by what the namespace holds,
// never by a variable, and the scripts ask the same question with the same
// answer: tessera_require_private_network in scripts/common.sh checks, and
// outside the namespace says how to run the test. A test class calls this
// from its static initMain(), which Qt Test runs first thing in main, before
// any socket is opened; outside the namespace the program ends with status 1.
inline void RequirePrivateNetwork()
{
    char bash[] = "bash";
    char command[] = "-c";
    char check[] = "source \"$1\" && tessera_require_private_network \"$2\"";
    char script[] = TESSERA_SOURCE_DIR "/scripts/common.sh";
    char* arguments[] = {bash, command, check, bash, script, program_invocation_short_name, nullptr};
    extern char** environ;
    pid_t child = 0;
    int status = 0;
    if (posix_spawnp(&child, bash, nullptr, nullptr, arguments, environ) != 0 || waitpid(child, &status, 0) != child
        || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    {
        std::exit(1);
    }
}

#endif
