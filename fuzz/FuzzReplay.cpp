// A plain driver for a fuzz target: runs every input named on the command
// line (a file, or every regular file of a folder in name order) through the
// target's LLVMFuzzerTestOneInput, without libFuzzer. It builds with any
// compiler, so the seeds and every input that once broke the library run in
// the ordinary suite, under the sanitizers of the build.
//   replay_<name> FILE_OR_FOLDER...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsOf(const fs::path& sArgument) {
  std::vector<fs::path> asFiles;
  if (!fs::is_directory(sArgument)) return {sArgument};
  for (const auto& rEntry : fs::directory_iterator(sArgument)) {
    if (rEntry.is_regular_file()) asFiles.push_back(rEntry.path());
  }
  std::sort(asFiles.begin(), asFiles.end());
  return asFiles;
}

// Runs one input from a heap block of exactly its size, so that a read past
// its end is caught by the address sanitizer.
bool Replay(const fs::path& sFile) {
  std::ifstream sIn(sFile, std::ios::binary);
  if (!sIn) {
    std::fprintf(stderr, "replay: cannot read %s\n", sFile.c_str());
    return false;
  }
  const std::string sBytes((std::istreambuf_iterator<char>(sIn)), std::istreambuf_iterator<char>());
  std::unique_ptr<uint8_t[]> pucData(new uint8_t[sBytes.size()]);
  std::copy(sBytes.begin(), sBytes.end(), pucData.get());
  if (LLVMFuzzerTestOneInput(pucData.get(), sBytes.size()) != 0) {
    std::fprintf(stderr, "replay: %s was refused by the target\n", sFile.c_str());
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<fs::path> asFiles;
  for (int i = 1; i < argc; ++i) {
    const std::vector<fs::path> asMore = InputsOf(argv[i]);
    asFiles.insert(asFiles.end(), asMore.begin(), asMore.end());
  }
  if (asFiles.empty()) {
    std::fprintf(stderr, "replay: no inputs\n");
    return 1;
  }
  int iFailed = 0;
  for (const fs::path& sFile : asFiles) {
    std::printf("replay: %s\n", sFile.c_str());
    std::fflush(stdout);  // the last name printed is the input that crashed
    if (!Replay(sFile)) ++iFailed;
  }
  std::printf("replay: %zu inputs, %zu passed, %d failed\n", asFiles.size(),
              asFiles.size() - static_cast<size_t>(iFailed), iFailed);
  return iFailed == 0 ? 0 : 1;
}
