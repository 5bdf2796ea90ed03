/// Ready-made jobs: scripts with a head, installed with the program or written by its user (docs/jobs.md).
#pragma once

#include <string>
#include <vector>

/// Where jobs stand, the user's own folder first: there a job takes the place of the program's of the same name.
std::vector<std::string> jobFolders();

/// The file of a job, empty when there is none of this name.
std::string jobFile(const std::string& name);

/// Prints every job with its variables. @return false, after a line on standard error each, when some cannot be read
bool listJobs();

/// The names of all jobs, with commas between them.
std::string jobNames();
