# The two commands of the README, and a few more for developers.
.PHONY: all deps build run test asan bench fuzz package clean

PRESET ?= default
BUILD_DIR = build/$(PRESET)
FUZZ_SECONDS ?= 60

all: build

deps:
	@bash scripts/install-deps

build: deps
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET)

run: build
	@bash scripts/run-demo $(BUILD_DIR)

test: build
	@ctest --preset $(PRESET) -j2

asan:
	@$(MAKE) --no-print-directory test PRESET=asan

bench: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release
	@bash scripts/run-bench build/release

fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz
	@bash scripts/run-fuzz build/fuzz $(FUZZ_SECONDS)

# The Debian package, build/package/mediashell_VERSION_ARCH.deb, from its own release tree.
package: deps
	@cmake --preset package >/dev/null
	@cmake --build --preset package
	@cpack --preset package

clean:
	rm -rf build
