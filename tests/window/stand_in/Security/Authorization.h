#pragma once

// Stands in for the system header of the same name where there is none: the few declarations that
// the launcher uses, with the values of the public interface. The test defines the functions.

#include <cstddef>
#include <cstdint>

using OSStatus = std::int32_t;
using AuthorizationFlags = std::uint32_t;
using AuthorizationString = const char*;
struct AuthorizationOpaqueRef;
using AuthorizationRef = const AuthorizationOpaqueRef*;

struct AuthorizationItem
{
    AuthorizationString name;
    std::size_t valueLength;
    void* value;
    std::uint32_t flags;
};

struct AuthorizationItemSet
{
    std::uint32_t count;
    AuthorizationItem* items;
};
using AuthorizationRights = AuthorizationItemSet;
using AuthorizationEnvironment = AuthorizationItemSet;

constexpr OSStatus errAuthorizationSuccess = 0;
constexpr const AuthorizationEnvironment* kAuthorizationEmptyEnvironment = nullptr;
constexpr AuthorizationFlags kAuthorizationFlagDefaults = 0;
constexpr AuthorizationFlags kAuthorizationFlagInteractionAllowed = 1U << 0U;
constexpr AuthorizationFlags kAuthorizationFlagExtendRights = 1U << 1U;
constexpr AuthorizationFlags kAuthorizationFlagDestroyRights = 1U << 3U;
constexpr AuthorizationFlags kAuthorizationFlagPreAuthorize = 1U << 4U;

extern "C" {
OSStatus AuthorizationCreate(const AuthorizationRights* rights,
                             const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                             AuthorizationRef* authorization);
OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment,
                                 AuthorizationFlags flags, AuthorizationRights** authorizedRights);
OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization, const char* pathToTool,
                                            AuthorizationFlags options, char* const* arguments,
                                            void** communicationsPipe);
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);
}
