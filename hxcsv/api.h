#pragma once
// Marks what the package exports to the host; everything else stays hidden.
#define HXCSV_API __attribute__((visibility("default")))
