#pragma once

/// The order in which the objects of a module that live as long as the module are created when it is loaded, whatever
/// source file they stand in. They are destroyed in reverse order when it is unloaded. A new group is a line here.
namespace ZYMLoadOrder {
inline constexpr int InterfaceMetaObjects = 101;
inline constexpr int CreationFunctions = 102;
inline constexpr int TraceChannels = 103;
inline constexpr int Vocabulary = 104;
inline constexpr int FileNames = 105;
inline constexpr int FormatVersions = 106;
inline constexpr int DefaultFormatVersion = 107;
inline constexpr int Capabilities = 108;
inline constexpr int KindNames = 109;
inline constexpr int ClassNames = 110;
inline constexpr int Tables = 111;
}  // namespace ZYMLoadOrder

/// Puts the definition of a namespace-scope object into one of the groups above.
#define ZYM_LOADED_AS(group) __attribute__((init_priority(ZYMLoadOrder::group)))
