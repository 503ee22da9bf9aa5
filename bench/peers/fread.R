# data.table::fread on a benchmark file.
#   Rscript fread.R FILE THREADS HEADER(0|1) FILL(0|1) SKIP
# FILL reads rows with fewer fields (the count lines of a line set) NA-padded.
# fread takes the column count from the first line it reads, so a line set is
# read from its second line on (SKIP 1): the first count line is the only one
# left out.
args <- commandArgs(trailingOnly = TRUE)
suppressPackageStartupMessages(library(data.table))
setDTthreads(as.integer(args[2]))
start <- proc.time()[["elapsed"]]
d <- fread(args[1], sep = ",", header = args[3] == "1", fill = args[4] == "1",
           skip = as.integer(args[5]), showProgress = FALSE)
seconds <- proc.time()[["elapsed"]] - start
cat("rows", nrow(d), "columns", ncol(d), "threads", getDTthreads(), "\n")
cat(sprintf("READ_SECONDS %.4f\n", seconds))
