# hxhost script: replays of the bundled examples (run from the repository root).
