// The exit status of qv_connect: what failed, so that a script need not read the text.
#ifndef TOOLS_QV_CONNECT_EXIT_CODES_H
#define TOOLS_QV_CONNECT_EXIT_CODES_H

namespace qv_connect {

enum ExitCode : int {
  kExitSuccess = 0,
  kExitInternal = 1,
  kExitArguments = 2,
  kExitInit = 3,
  kExitPhoneConnect = 4,
  kExitWebSocket = 5,
  kExitFirstFrame = 6,
  kExitCommand = 7,
  kExitInterrupted = 130  // 128 + SIGINT, as shells have it
};

inline constexpr const char* kExitCodeHelp =
    "Exit status:\n"
    "  0    connected to the first frame, every command taken, released\n"
    "  1    an error of the machine, such as no memory\n"
    "  2    wrong arguments\n"
    "  3    init failed\n"
    "  4    phone-connect failed or was refused\n"
    "  5    the WebSocket connection, its authentication or play failed\n"
    "  6    no first frame in time\n"
    "  7    connected, but a command was wrong or failed\n"
    "  130  interrupted\n";

}  // namespace qv_connect

#endif
