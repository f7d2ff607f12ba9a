#pragma once

namespace vesk {

// Gives the framework's own interfaces their display names; part of the library's start-up.
void RegisterStandardInterfaceNames();

} // namespace vesk
