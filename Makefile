# The ways to set up, build, run and test. Every target makes what it needs first; `make` alone lists them.
# Nothing is built outside build/, except for the private Wine in the user's cache (scripts/wine-root).

SHELL := /bin/bash
.SHELLFLAGS := -euo pipefail -c
.DEFAULT_GOAL := help
MAKEFLAGS += --no-print-directory

JOBS ?= $(shell nproc)
ARGS ?=

.PHONY: help setup run stage test bench clang clean

help:
	@echo 'make run [ARGS="..."]  build, stage and run the example host under Wine, with its log'
	@echo 'make test              build and run the tests; ARGS="-R NAME" runs some, as ctest does'
	@echo 'make stage             build what a user gets, into build/stage'
	@echo 'make bench             build and run the benchmarks; results also in build/bench.json'
	@echo 'make clang             build everything with clang'
	@echo 'make setup             install and make what the others need, nothing else'
	@echo 'make clean             stop Wine and remove build/'
	@echo
	@echo 'JOBS=N: build and test N things at a time (now $(JOBS)).  Wine: docs/wine.md'

setup:
	@scripts/setup

# $(call build,PRESET): configured once; the build itself sees changed CMake files.
define build
@[[ build/$(1)/build.ninja -nt CMakePresets.json ]] || cmake --preset $(1)
@cmake --build --preset $(1) --parallel $(JOBS)
endef

# Files that an earlier stage put there and this one may not are removed; what a user adds stays.
stage: setup
	$(call build,release)
	@[[ ! -f build/release/install_manifest.txt ]] || tr '\n' '\0' <build/release/install_manifest.txt | xargs -0 rm -f --
	@cmake --install build/release --prefix build/stage >build/release/install.log || { cat build/release/install.log; exit 1; }

# On a machine with a display the host's windows appear on it.
run: stage
	@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/wine-run build/stage/corvix-host.exe log on >/dev/null
	@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/wine-run build/stage/corvix-host.exe --show-log $(ARGS)
	$(if $(ARGS),,@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/fetch-demo build/stage/corvix-host.exe build/fetch-demo)
	$(if $(ARGS),,@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/wine-run build/stage/corvix-host.exe draw build/page.png)

test: setup
	$(call build,debug)
	@scripts/run-tests build/debug --parallel $(JOBS) $(ARGS)

bench:
	@scripts/setup bench
	$(call build,bench)
	@scripts/wine-run build/bench/bin/corvix-bench.exe --json build/bench.json $(ARGS)

clang: setup
	$(call build,clang)

clean:
	@scripts/wine-server stop
	@CORVIX_DISPLAY=1 scripts/wine-server stop
	@scripts/wine-server forget build/wine/prefix
	@scripts/wine-server forget build/wine/prefix-display
	@rm -rf build
