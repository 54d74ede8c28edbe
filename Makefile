# The two set-up commands of the README: `make run` and `make test`.
BUILD      ?= build
BUILD_TEST ?= build-test
BUILD_FUZZ ?= build-fuzz
SECONDS    ?= 600
JOBS       ?= 2
CMAKE_GEN  := -G "Unix Makefiles"
SUPP       := $(CURDIR)/tests/lsan.supp

export LSAN_OPTIONS  := suppressions=$(SUPP):print_suppressions=0
export ASAN_OPTIONS  := detect_leaks=1
export UBSAN_OPTIONS := print_stacktrace=1:halt_on_error=1

.PHONY: deps build run test fuzz screenshots bench soak install package package-check package-install-check clean

deps:
	@bash scripts/install-deps.sh

build: deps
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DTAVREL_TESTS=OFF
	cmake --build $(BUILD) -j$(JOBS)

run: build
	@bash scripts/run.sh $(BUILD)

test: deps
	cmake -S . -B $(BUILD_TEST) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DTAVREL_SANITIZE=ON
	cmake --build $(BUILD_TEST) -j$(JOBS)
	cd $(BUILD_TEST) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j$(JOBS)
	@bash scripts/fuzz.sh $(BUILD_FUZZ) 7

# Every fuzzer for SECONDS each; the corpus grows in $(BUILD_FUZZ)/fuzz-corpus, findings land in fuzz-findings.
fuzz: deps
	@bash scripts/fuzz.sh $(BUILD_FUZZ) $(SECONDS)

screenshots: build
	@bash scripts/install-deps.sh xvfb xauth xdotool imagemagick fonts-dejavu-core
	@bash scripts/screenshots.sh $(BUILD)

bench: build
	@bash scripts/bench.sh $(BUILD)

# Every fault of the virtual tracker against read, write, telemetry and flash (a few minutes).
soak: build
	python3 bench/soak/soak.py $(BUILD)

install: build
	cmake --install $(BUILD)

# The Debian package in $(BUILD); `sudo apt install ./$(BUILD)/tavrel-cfg_*.deb` installs it.
package: build
	cd $(BUILD) && cpack -G DEB

# Looks inside the package and unpacks it into a throw-away root: not part of `make test` (it needs
# the Release build).
package-check: package
	@bash scripts/package-check.sh $(BUILD)

# Installs the package into a fresh minimal Debian 12 root (mmdebstrap; root and the network needed).
package-install-check: package
	@bash scripts/package-install-check.sh $(BUILD)

clean:
	rm -rf $(BUILD) $(BUILD_TEST) $(BUILD_FUZZ)
