// The numbers of the TYPELIB resources in the manager.
#pragma once

// The first is the one that LoadTypeLib finds under the bare path of the executable: the public one.
inline constexpr int kPublicTypeLibrary = 1;

// The objects that the public ones hand out.
inline constexpr int kFormsTypeLibrary = 2;
