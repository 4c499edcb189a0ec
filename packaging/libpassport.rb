# SPDX-License-Identifier: MIT
# The Homebrew formula; scripts/package fills in version and checksum of the source that it packs, and writes the result
# beside it. Whoever publishes it puts the place of the source in "url".
class Libpassport < Formula
  desc "Client library of a user-account service"
  homepage "https://example.com/libpassport"
  url "https://example.com/libpassport-@VERSION@.tar.gz"
  sha256 "@SHA256@"
  license "MIT"

  depends_on "cli11" => :build
  depends_on "cmake" => :build
  depends_on "ninja" => :build
  depends_on "pkg-config" => :build
  depends_on "cpp-httplib"
  depends_on "curl"
  depends_on "qt@5"

  # Without the web tool: not every build of this Qt has a browser engine.
  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", *std_cmake_args,
           "-DPASSPORT_BUILD_EMULATOR=ON", "-DPASSPORT_BUILD_TOOLS=ON"
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  test do
    assert_match version.to_s, shell_output("#{bin}/passportctl --version")
  end
end
