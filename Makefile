# Set-up and test commands for a fresh machine:
#   make demo   installs what is missing, builds, and runs the dewarp tool on the built-in sample
#   make test   installs what is missing, builds every tree and runs the whole suite in each
#   make build  builds the x86-64 and i386 trees only

JOBS ?= $(shell nproc)
DEWARP_WERROR ?= OFF
CMAKE_COMMON = -DDEWARP_WERROR=$(DEWARP_WERROR)
CTEST = ctest --output-on-failure -j $(JOBS)

.PHONY: all deps build test build-x86_64 build-i386 build-asan test-x86_64 test-i386 test-asan \
        test-tsan test-fuzz digest clean
FUZZ_SECONDS ?= 30

all: build

deps:
	./scripts/install-deps

build/x86_64/CMakeCache.txt:
	cmake -S . -B build/x86_64 -DDEWARP_ARCH=x86_64 -DCMAKE_BUILD_TYPE=Release $(CMAKE_COMMON)
build/i386/CMakeCache.txt:
	cmake -S . -B build/i386 -DDEWARP_ARCH=i386 -DCMAKE_BUILD_TYPE=Release $(CMAKE_COMMON)
build/asan/CMakeCache.txt:
	cmake -S . -B build/asan -DDEWARP_ARCH=x86_64 -DDEWARP_SANITIZE=address -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_C_FLAGS_DEBUG="-O1 -g" $(CMAKE_COMMON)

build/tsan/CMakeCache.txt:
	cmake -S . -B build/tsan -DDEWARP_ARCH=x86_64 -DDEWARP_SANITIZE=thread -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_C_FLAGS_DEBUG="-O1 -g" $(CMAKE_COMMON)
build/fuzz/CMakeCache.txt:
	CC=clang CXX=clang++ cmake -S . -B build/fuzz -DDEWARP_ARCH=x86_64 -DDEWARP_SANITIZE=fuzzer -DDEWARP_FUZZ=ON \
	  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_C_FLAGS_DEBUG="-O1 -g" $(CMAKE_COMMON)

build-x86_64 build-i386 build-asan: build-%: build/%/CMakeCache.txt
	cmake build/$* -DDEWARP_WERROR=$(DEWARP_WERROR) > /dev/null
	cmake --build build/$* -j $(JOBS)

build: build-x86_64 build-i386

test-x86_64 test-i386: test-%: build-%
	cd build/$* && $(CTEST)

# The sanitizer tree halts on the first error it finds.
test-asan: build-asan
	cd build/asan && ASAN_OPTIONS=halt_on_error=1:detect_leaks=1 \
	  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 $(CTEST)

# Concurrency under ThreadSanitizer: the channel stress test, and the table memory tests (threads
# sharing the kept table blocks). Only those two programs are built there.
test-tsan: build/tsan/CMakeCache.txt
	cmake --build build/tsan -j $(JOBS) --target test_channel_stress test_maps
	TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 build/tsan/bin/test_channel_stress
	TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 build/tsan/bin/test_maps --gtest_filter='TableMemory.*'

# Bad input through the C interface: libFuzzer from the seed corpus for a bounded time; any crash,
# sanitizer report or leak fails. New inputs go to build/fuzz/corpus, never into the repository.
test-fuzz: build/fuzz/CMakeCache.txt
	cmake --build build/fuzz -j $(JOBS) --target dewarp_fuzz
	mkdir -p build/fuzz/corpus
	build/fuzz/bin/dewarp_fuzz -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 -detect_leaks=1 \
	  build/fuzz/corpus tests/fuzz/corpus

# The same deterministic engine results must come out of both architectures bit for bit.
digest: build-x86_64 build-i386
	./scripts/compare-digests build/x86_64/bin/dewarp_digest build/i386/bin/dewarp_digest

# The dewarp tool on the built-in sample: every view kind for a ceiling and a wall camera, one PNG
# each and a labelled contact sheet in out/demo/ (the sheet is also copied to docs/ for the README).
.PHONY: demo
demo: deps build/x86_64/CMakeCache.txt
	cmake build/x86_64 -DDEWARP_WERROR=$(DEWARP_WERROR) > /dev/null
	cmake --build build/x86_64 -j $(JOBS) --target dewarp
	build/x86_64/bin/dewarp --demo --out-dir out/demo
	mkdir -p docs && cp out/demo/contact-sheet.png docs/contact-sheet.png

test: deps
	$(MAKE) test-x86_64
	$(MAKE) test-i386
	$(MAKE) digest
	$(MAKE) test-asan
	$(MAKE) test-tsan
	$(MAKE) test-fuzz
	@echo "make test: all trees passed"

clean:
	rm -rf build out
