# The short commands. Each installs what it needs and is missing (see scripts/install-deps.sh), and
# builds into build/<preset>/.

JOBS ?= $(shell nproc)

DEPS := scripts/install-deps.sh
SOURCES = $(shell git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' '*.c')
LIBRARY_FOLDERS := memory text params json portable recordset
TIDY_FOLDERS := $(LIBRARY_FOLDERS) tools

.DEFAULT_GOAL := help
# Options for the benchmark run, such as --quick or --arch x64.
BENCH ?=
# How long each fuzz target runs, and other options of fuzz/run.py, such as --jobs 2 or --arch x64.
SECONDS ?= 60
FUZZ ?=
# ON takes the tool and its tests into `make asan`, which doubles its time.
ASAN_TOOLS ?= OFF
# What packages are made for. The cross compiler is there once `make check-arm64` was called.
PACKAGES ?= x86 x64 $(if $(wildcard build/cross/arm64/toolchain.cmake),arm64)

# What `make check-clang` runs: the quick tests of the library. The presets can do more.
CLANG_TESTS := json memory params portable recordset text threads

# What `make memcheck` runs: the tests of the library that take no programs of their own. The option
# leaves it to the tests to count allocations, and to let them fail.
MEMCHECK_TESTS := json lives memory params portable recordset text
MEMCHECK := valgrind --quiet --error-exitcode=1 --soname-synonyms=somalloc=nouserintercepts
.PHONY: help build demo demo-cluster check check-arm64 check-armhf check-s390x \
  check-riscv64 check-clang check-databases bench bench-hosts bench-tool bench-report asan \
  tsan memcheck fuzz fuzz-prove fmt fmt-check tidy \
  tidy-changed cppcheck symbols coverage docs packages packages-check \
  wasm wasm-check wasm-bench browser-demo

help: ## list these commands
	@sed -nE 's/^([a-z0-9-]+)( [^:]*)?:.*## (.*)/  make \1\t\3/p' $(MAKEFILE_LIST) | expand -t 20

# $(call configure,PRESET), $(call build,PRESET), $(call test,PRESET)
configure = cmake --preset $(1)
build = $(call configure,$(1)) && cmake --build --preset $(1) --parallel $(JOBS)
test = ctest --preset $(1) --parallel $(JOBS)

build: ## build the 64-bit release: libraries, tool, examples, tests
	$(DEPS) build tests tools
	$(call build,x64)

demo: ## run the main job on real data: a query's rows through text into another process
	$(DEPS) build tests tools
	$(call configure,x64)
	cmake --build --preset x64 --parallel $(JOBS) --target qxrs
	scripts/demo.sh build/x64/tools/qxrs

demo-cluster: ## a table in parts on a Dask cluster on this machine, checked against SQLite
	$(DEPS) build cluster
	$(call configure,x64)
	cmake --build --preset x64 --parallel $(JOBS) --target qxrecordset
	PYTHONPATH=python QXRECORDSET_LIBRARY=$(CURDIR)/build/x64/libQXRecordSet.so.1 \
	  /usr/bin/python3 -B scripts/demo-cluster.py

check: ## build and test both architectures
	$(DEPS) build tests tools
	$(call build,x86)
	$(call build,x64)
	$(call test,x86)
	$(call test,x64)

check-arm64 check-armhf check-s390x check-riscv64: check-%: ## build for another processor, test under qemu (check-armhf, -s390x, -riscv64)
	$(DEPS) build tests cross
	scripts/cross-toolchain.sh $*
	$(call build,$*)
	$(call test,$*)

check-clang: ## build the library and its tests with Clang and both standard libraries
	$(DEPS) build tests clang
	$(foreach preset,clang clang-libcxx,$(call configure,$(preset)) && cmake --build --preset $(preset) \
	  --parallel $(JOBS) --target $(CLANG_TESTS:%=test_%) && printf '%s\n' $(CLANG_TESTS) \
	  | xargs -P $(JOBS) -I{} env build/$(preset)/tests/test_{} --gtest_brief=1 &&) true

bench: ## measure beside other JSON libraries (BENCH=--quick: a minute, rough figures)
	$(DEPS) build tests tools bench
	bench/fetch-i386-peers.sh build/x86/peers
	$(foreach arch,x86 x64,$(call configure,$(arch)) -DQXRECORDSET_BUILD_BENCH=ON \
	  && cmake --build --preset $(arch) --parallel $(JOBS) --target benchmarks &&) true
	bench/run.py $(BENCH)

bench-tool: ## measure qxrs beside Miller, jq and sqlite3
	$(DEPS) build tools bench-tool
	$(call configure,x64)
	cmake --build --preset x64 --parallel $(JOBS) --target qxrs
	bench/tool.py build/x64/tools/qxrs

check-databases: ## test qxrs against PostgreSQL and MariaDB servers, started on loopback
	$(DEPS) build tools databases
	$(call configure,x64)
	cmake --build --preset x64 --parallel $(JOBS) --target qxrs
	tests/tools/databases.sh build/x64/tools/qxrs

bench-hosts: ## measure the Python package beside the json module, and record sets on all cores
	$(DEPS) build
	$(call configure,x64) -DQXRECORDSET_BUILD_BENCH=ON
	cmake --build --preset x64 --parallel $(JOBS) --target qxrecordset bench_threads
	PYTHONPATH=python QXRECORDSET_LIBRARY=build/x64/libQXRecordSet.so.1 \
	  /usr/bin/python3 -B python/benchmark.py
	build/x64/bench/bench_threads

bench-report: ## write docs/benchmarks.md with its plots from the last results
	$(DEPS) bench report
	/usr/bin/python3 -B bench/report.py

asan: ## the tests under address and undefined behaviour sanitizers, both architectures
	$(DEPS) build tests tools
	$(foreach arch,x86 x64,$(call configure,$(arch)-asan) -DQXRECORDSET_BUILD_TOOLS=$(ASAN_TOOLS) \
	  && cmake --build --preset $(arch)-asan --parallel $(JOBS) &&) true
	$(call test,x86-asan)
	$(call test,x64-asan)

tsan: ## the tests with more than one thread, under the thread sanitizer
	$(DEPS) build tests tools
	$(call configure,x64-tsan)
	cmake --build --preset x64-tsan --parallel $(JOBS) --target test_threads
	$(call test,x64-tsan) --label-regex threads

memcheck: ## the library's tests under valgrind: nothing depends on memory never written (64-bit)
	$(DEPS) build tests memcheck
	$(call configure,x64)
	cmake --build --preset x64 --parallel $(JOBS) --target $(MEMCHECK_TESTS:%=test_%)
	printf '%s\n' $(MEMCHECK_TESTS) \
	  | xargs -P $(JOBS) -I{} $(MEMCHECK) build/x64/tests/test_{} --gtest_brief=1

fuzz: ## run every fuzz target for SECONDS=60, both architectures (FUZZ="--jobs 2 --targets parse")
	$(DEPS) build tests fuzz
	$(call build,x86-fuzz)
	$(call build,x64-fuzz)
	fuzz/run.py --seconds $(SECONDS) $(FUZZ)

fuzz-prove: ## plant faults in a copy of the library: each fuzz target has to find its own
	$(DEPS) build tests fuzz
	fuzz/prove.py --seconds $(SECONDS)

fmt: ## format all sources
	$(DEPS) fmt
	@echo clang-format-14 -i: $(words $(SOURCES)) files
	@clang-format-14 -i $(SOURCES)

fmt-check: ## fail when a source is not formatted
	$(DEPS) fmt
	@echo clang-format-14 --dry-run --Werror: $(words $(SOURCES)) files
	@clang-format-14 --dry-run --Werror $(SOURCES)

tidy: ## clang-tidy over the library and the tool
	$(DEPS) build tests tools tidy
	$(call configure,x64)
	run-clang-tidy-14 -clang-tidy-binary clang-tidy-14 -quiet -j $(JOBS) -p build/x64 \
	  $(TIDY_FOLDERS:%='^$(CURDIR)/%/.*\.cpp$$')

tidy-changed: ## clang-tidy over what changed since origin/main, or in the last commit
	$(DEPS) build tests tools tidy
	$(call build,x64)
	scripts/changed-sources.sh build/x64 $(TIDY_FOLDERS) | xargs --no-run-if-empty -P $(JOBS) -n 1 \
	  clang-tidy-14 --quiet -p build/x64

cppcheck: ## cppcheck over the library and the tool
	$(DEPS) build tests tools cppcheck
	$(call configure,x64)
	cppcheck --quiet --error-exitcode=1 --std=c++17 --language=c++ --inline-suppr -j $(JOBS) \
	  --enable=warning,style,performance,portability --suppressions-list=.cppcheck \
	  --template='{file}:{line}: {severity}: {message} [{id}]' \
	  -I. -Ibuild/x64/generated/include $(TIDY_FOLDERS)

symbols: ## rewrite the checked-in list of exported symbols
	$(DEPS) build tests
	$(foreach arch,x86 x64,$(call configure,$(arch)) \
	  && cmake --build --preset $(arch) --parallel $(JOBS) --target qxrecordset &&) true
	tests/exports/symbols.sh write build/x86/libQXRecordSet.so build/x64/libQXRecordSet.so \
	  tests/exports/symbols.txt

coverage: ## line coverage of the library by its own tests (98 % or it fails)
	$(DEPS) build tests coverage
	$(call configure,coverage) -DQXRECORDSET_BUILD_TOOLS=OFF -DQXRECORDSET_BUILD_EXAMPLES=OFF
	cmake --build --preset coverage --parallel $(JOBS)
	find build/coverage -name '*.gcda' -delete
	$(call test,coverage) --label-exclude docs
	mkdir -p build/coverage/report
	gcovr --root . $(LIBRARY_FOLDERS:%=--filter '%/') --exclude-throw-branches --fail-under-line 98 \
	  --txt --html-details build/coverage/report/index.html \
	  build/coverage/CMakeFiles build/coverage/tests

docs: ## build the reference with all pages: build/docs/index.html
	$(DEPS) docs
	mkdir -p build/docs
	{ cat docs/doxygen/Doxyfile; sed -nE 's/^ *VERSION ([0-9.]+)$$/PROJECT_NUMBER = \1/p' CMakeLists.txt; \
	  printf 'IMAGE_PATH = %s\n' $(wildcard docs/plots); } | doxygen -

packages: export SOURCE_DATE_EPOCH ?= $(or $(shell git log -1 --format=%ct 2>/dev/null),$(shell date +%s))
packages: ## make the Debian packages in build/package-*/packages/: amd64, i386, arm64 with its compiler
	$(DEPS) build tests tools packages
	$(if $(filter arm64,$(PACKAGES)),$(DEPS) cross && scripts/cross-toolchain.sh arm64)
	rm -rf $(PACKAGES:%=build/package-%/packages)
	$(foreach arch,$(PACKAGES),$(call build,package-$(arch)) \
	  && cpack --config build/package-$(arch)/CPackConfig.cmake &&) true

packages-check: packages ## make the Debian packages, check them and build programs against them
	$(DEPS) tests
	packaging/check.sh $(PACKAGES:%=build/package-%)

wasm: ## build the npm package, with the library as WebAssembly, in build/wasm/package/
	$(DEPS) wasm
	emcmake cmake -S packaging/npm -B build/wasm -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
	cmake --build build/wasm --parallel $(JOBS)

wasm-check: wasm ## test the npm package in node and the page that shows it in Chromium
	tests/npm/run.sh build/wasm
	tests/browser/run.sh build/wasm

wasm-bench: wasm ## measure the npm package beside JSON.parse and JSON.stringify
	tests/npm/run.sh build/wasm bench

browser-demo: wasm ## serve the page that shows record sets in a browser: http://localhost:8017/
	node examples/browser/serve.mjs build/wasm/package 8017
