#pragma once
// Symbols of the host stand-in that packages and hxhost may use.
#define HXSDK_API __attribute__((visibility("default")))
