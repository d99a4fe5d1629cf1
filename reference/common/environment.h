// What the settings ask of the operating system. Threads: any, as long as nobody changes the environment meanwhile.
#ifndef REFERENCE_COMMON_ENVIRONMENT_H
#define REFERENCE_COMMON_ENVIRONMENT_H

#include <filesystem>
#include <string>

namespace reference {

// UTF-8; empty when there is no such variable.
std::string EnvironmentText(const char* name);

// Where this user's programs keep their files on this machine; empty when the system does not say.
std::filesystem::path UserDataRoot();

}  // namespace reference

#endif
