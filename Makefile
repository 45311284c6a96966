# The ways to set up, build, run and test. Every target makes what it needs first; `make` alone lists them.
# Nothing is built outside build/, except for the private Wine in the user's cache (scripts/wine-root).

SHELL := /bin/bash
.SHELLFLAGS := -euo pipefail -c
.DEFAULT_GOAL := help
MAKEFLAGS += --no-print-directory

JOBS ?= $(shell nproc)
ARGS ?=
SECONDS ?= 60
TARGETS ?=
# What make x64-NAME sets for make NAME: the presets of 64 bits, and their Wine.
X64 ?=
ifneq ($(X64),)
export CORVIX_BITS = 64
endif

.PHONY: help setup run desk stage package test native fuzz lint format reference coverage soak mutate bench clang clean
x64_targets := x64-run x64-desk x64-test x64-stage x64-bench x64-clang
.PHONY: $(x64_targets) x64-sample

help:
	@echo 'make run [ARGS="..."]  build, stage and run the example host under Wine, with its log'
	@echo 'make desk [ARGS=FILE]  build, stage and run corvix-desk, the editor with windows, on the display'
	@echo 'make test              build and run the tests; ARGS="-R NAME" runs some, as ctest does'
	@echo 'make native            build what does not need the system for this machine, 64 and 32 bits, with sanitizers; run its tests'
	@echo 'make fuzz [SECONDS=60] look for inputs that break a reader, so many seconds a target; TARGETS="NAME..." for some'
	@echo 'make lint              clang-format, clang-tidy, shellcheck and our own checks; "make format" rewrites what the first minds'
	@echo 'make reference         pages of the public headers, into build/reference'
	@echo 'make coverage          which lines and branches the tests run; pages in build/coverage/report'
	@echo 'make soak              the long forms of sweeps, stress, fuzz and comparisons'
	@echo 'make mutate            break the code in forty places, one after the other, and see whether the tests notice'
	@echo 'make stage             build what a user gets, into build/stage'
	@echo 'make package           ZIPs of both word sizes in build/packages: Runtime, SDK, Symbols'
	@echo 'make bench             build and run the benchmarks; results also in build/bench.json'
	@echo 'make clang             build everything with clang'
	@echo 'make setup             install and make what run, test and clang need, nothing else'
	@echo 'make clean             stop Wine and remove build/'
	@echo 'make x64-run, x64-desk, x64-test, x64-stage, x64-bench, x64-clang: the same for 64-bit Windows; the stage of both is one folder'
	@echo
	@echo 'JOBS=N: build N things at a time (now $(JOBS)), test twice as many.  Wine: docs/wine.md  Tests: docs/testing.md'

$(x64_targets): x64-%:
	@$(MAKE) $* X64=x64-

setup:
	@scripts/setup test

# $(call build,PRESET): configured once; the build itself sees changed CMake files.
define build
@[[ build/$(1)/build.ninja -nt CMakePresets.json ]] || cmake --preset $(1)
@cmake --build --preset $(1) --parallel $(JOBS)
endef

# $(call native,BITS): the same for what is built for this machine.
define native
@[[ build/native-$(1)/build.ninja -nt tests/native/CMakePresets.json ]] || (cd tests/native && cmake --preset $(1))
@cmake --build build/native-$(1) --parallel $(JOBS)
endef

release := $(X64)release
host := build/stage/$(if $(X64),x64/)corvix-host.exe
packed := $(CURDIR)/build/release;Corvix;ALL;/;$(CURDIR)/build/x64-release;Corvix;ALL;/

# Files that an earlier stage put there and this one may not are removed; what a user adds stays.
stage:
	@scripts/setup
	$(call build,$(release))
	@[[ ! -f build/$(release)/install_manifest.txt ]] || tr '\n' '\0' <build/$(release)/install_manifest.txt | xargs -0 rm -f --
	@cmake --install build/$(release) --prefix build/stage >build/$(release)/install.log || { cat build/$(release)/install.log; exit 1; }

package:
	@scripts/setup
	@CORVIX_BITS=64 scripts/setup
	$(call build,release)
	$(call build,x64-release)
	@cd build/release && cpack -D "CPACK_INSTALL_CMAKE_PROJECTS=$(packed)" >package.log || { cat package.log; exit 1; }
	@ls -s --block-size=K build/packages/*.zip

# What .ci/run tries of 64 bits: that the library and the host build, hostile modules and with them the guard, linking. CTest's names are those of make test.
x64-sample: export CORVIX_BITS = 64
x64-sample:
	@scripts/setup test
	@[[ build/x64-debug/build.ninja -nt CMakePresets.json ]] || cmake --preset x64-debug
	@cmake --build build/x64-debug --parallel $(JOBS) --target corvix-host-runs corvix-module-probe corvix-links-O0 corvix-links-Og
	@scripts/run-tests build/x64-debug --parallel $(JOBS) -R '^(hostile\.(listed|asked|shown)|links\.)'

# On a machine with a display the host's windows appear on it.
run: stage
	@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/wine-run $(host) log on >/dev/null
	@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/wine-run $(host) --show-log $(ARGS)
	$(if $(ARGS),,@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/fetch-demo $(host) build/$(X64)fetch-demo)
	$(if $(ARGS),,@CORVIX_DISPLAY=$${DISPLAY:+1} scripts/wine-run $(host) draw build/$(X64)page.png)

# Wine would run it without a display, too, and nobody would see it.
desk:
	@[[ -n $${DISPLAY:-} ]] || { echo 'There is no display ($$DISPLAY is empty) for the windows to be on.' >&2; exit 1; }
	@$(MAKE) stage
	@CORVIX_DISPLAY=1 scripts/wine-run $(dir $(host))corvix-desk.exe $(ARGS)

# The native tests are the same for both word sizes of Windows. Two tests a core, as many only wait.
test: setup
	$(call build,$(X64)debug)
	$(if $(X64),,$(call native,64))
	@scripts/run-tests build/$(X64)debug $(if $(X64),,build/native-64) --parallel $$((2 * $(JOBS))) $(ARGS)

native:
	@scripts/setup test native
	$(call native,64)
	$(call native,32)
	@ctest --test-dir build/native-64 --output-on-failure --parallel $(JOBS) $(ARGS)
	@ctest --test-dir build/native-32 --output-on-failure --parallel $(JOBS) $(ARGS)

fuzz: setup
	$(call native,64)
	@python3 tests/fuzz/fuzz.py build/native-64/bin/corvix-fuzz build/fuzz --seconds $(SECONDS) $(TARGETS)

lint:
	@scripts/setup test lint
	@[[ build/clang/build.ninja -nt CMakePresets.json ]] || cmake --preset clang
	@scripts/lint $(ARGS)

format:
	@scripts/setup test
	@scripts/lint --rewrite

reference:
	@scripts/setup reference
	@mkdir -p build
	@doxygen docs/Doxyfile
	@echo build/reference/index.html

coverage:
	@scripts/setup test coverage
	$(call build,coverage)
	@scripts/coverage build/coverage $(ARGS)

# Tests ask tests/support/Soak.h how long they may take.
soak: setup
	$(call build,debug)
	$(call native,64)
	@CORVIX_SOAK=1 scripts/run-tests build/debug build/native-64 --parallel $(JOBS) $(ARGS)
	@python3 tests/fuzz/fuzz.py build/native-64/bin/corvix-fuzz build/fuzz --seconds $$(($(SECONDS) * 5)) $(TARGETS)

mutate: setup
	@tests/mutate/mutate.py $(ARGS)

bench:
	@scripts/setup bench
	$(call build,$(X64)bench)
	@scripts/bench build/$(X64)bench/bin/corvix-bench.exe build/$(X64)bench.json $(ARGS)

clang: setup
	$(call build,$(X64)clang)

clean:
	@for bits in 32 64; do for display in 0 1; do CORVIX_BITS=$$bits CORVIX_DISPLAY=$$display scripts/wine-server stop; done; done
	@for name in prefix{,-display}{,-x64}; do scripts/wine-server forget build/wine/$$name; done
	@rm -rf build
