# hxhost script: replays of the bundled examples (run from the repository root).
# A CT density volume of 32 x 24 x 16 float values, voxel size 0.5.
load -uniform_scalar_field_csv "examples/density_32x24x16.csv" "CSVUniformScalarField # 1 , 4 0 32 24 16 28497 0 1 1 0 0 1 0 0 0 0.5 0.5 0.5" -dataOnly

# Airborne survey: 3000 points; header row, comma-separated, a comment line.
# Value1 = "class" as text (String), Value2 = "intensity", Value3 = "return".
load -point_cloud_csv "examples/survey_points.csv" CSVParams "examples/survey_points.csv" "7 0 1 2 4 3 5 -1" "," "#" 1 1 0 "1 0 0 0" -dataOnly

# Ocean drifters: six tracks of x, y, depth and temperature; a line "END"
# closes each track ("Line delimeter" mode, Value1 = temperature).
load -line_set_csv "examples/drifter_tracks.csv" CSVParams "examples/drifter_tracks.csv" "4 0 1 2 3" "," "#" 1 0 0 -lineSetParams 1 END 0 0 -dataOnly
