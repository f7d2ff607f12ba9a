#pragma once

// The stand-in exports the platform's names from one shared library.
#define STANDIN_API __attribute__((visibility("default")))
