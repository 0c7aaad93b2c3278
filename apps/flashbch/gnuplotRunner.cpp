#include "gnuplotRunner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "usageError.h"

namespace flashbch {

namespace {

std::string extensionOf(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext;
}

bool gnuplotOnPath() {
  const char* path = std::getenv("PATH");
  if (!path) return false;
  std::string dirs = path;
  std::string::size_type start = 0;
  while (start <= dirs.size()) {
    auto colon = dirs.find(':', start);
    if (colon == std::string::npos) colon = dirs.size();
    const std::string dir = dirs.substr(start, colon - start);
    const std::string candidate = (dir.empty() ? std::string(".") : dir) + "/gnuplot";
    if (::access(candidate.c_str(), X_OK) == 0) return true;
    start = colon + 1;
  }
  return false;
}

// Single-quoted gnuplot string: a quote is doubled.
std::string quoted(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("''") : std::string(1, c);
  return q + "'";
}

}  // namespace

void checkPlotTarget(const std::string& output) {
  const std::string ext = extensionOf(output);
  if (ext != ".png" && ext != ".svg") throw UsageError("--plot: " + output + " must end in .png or .svg");
  if (!gnuplotOnPath())
    throw UsageError(
        "--plot: gnuplot was not found on PATH; install it (Debian: apt-get install gnuplot-nox) "
        "or leave out --plot");
}

std::string runGnuplot(const PlotRequest& request) {
  std::string pattern = (std::filesystem::temp_directory_path() / "flashbch-plot.XXXXXX").string();
  if (!::mkdtemp(pattern.data())) return "cannot make a temporary directory";
  const std::filesystem::path dir = pattern;
  const std::filesystem::path data = dir / "data.csv";
  const std::filesystem::path script = dir / "plot.gp";
  std::ofstream(data) << request.csv;

  const bool png = extensionOf(request.output) == ".png";
  std::string series = request.series;
  for (std::string::size_type at; (at = series.find("'DATA'")) != std::string::npos;)
    series.replace(at, 6, quoted(data.string()));
  {
    std::ofstream gp(script);
    gp << (png ? "set terminal pngcairo size 900,560 enhanced font ',10'\n"
               : "set terminal svg size 900,560 enhanced font 'sans,10'\n")
       << "set output " << quoted(request.output) << "\n"
       << "set datafile separator ','\n"
       << "set key autotitle columnhead\n"
       << "set title " << quoted(request.title) << "\n"
       << "set xlabel " << quoted(request.xLabel) << "\n"
       << "set ylabel " << quoted(request.yLabel) << "\n"
       << "set logscale y\nset format y '10^{%L}'\nset grid\n"
       << "set key " << request.keyPosition << " box opaque\n"
       << (request.logX ? "set logscale x\nset format x '10^{%L}'\n" : "") << "plot " << series << "\n";
  }
  const std::string command = "gnuplot " + std::string("'") + script.string() + "' 2>&1";
  const int status = std::system(command.c_str());
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
  if (status == -1 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return "gnuplot failed to draw " + request.output;
  return "";
}

}  // namespace flashbch
