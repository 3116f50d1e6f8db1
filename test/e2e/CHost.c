/* SPDX-License-Identifier: Apache-2.0
 *
 * A host written in C, with nothing but the public headers and the dynamic linker: it starts the
 * library in simulation, looks at every record that it gets, and reads two fans and a temperature.
 * Its one argument is the library's path. Exits with 0 when all is as the headers say; says what
 * is not.
 */
#include <dlfcn.h>
#include <pl/pl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define EXPECT(condition)                                                     \
  do {                                                                        \
    if (!(condition)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                             \
    }                                                                         \
  } while (0)

static int failures;

/* The services. One timer is enough for one PSoC. */

static int traceLines;
static pl_timer_callback timerCallback;
static void* timerContext;
static uint32_t timerInterval;

int pl_trace(int level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  EXPECT(level >= 0 && level <= 7);
  EXPECT(vsnprintf(NULL, 0, format, arguments) > 0);
  va_end(arguments);
  return ++traceLines;
}

pl_timer_handle pl_timer_add(pl_timer_callback callback, void* context) {
  timerCallback = callback;
  timerContext = context;
  return 1;
}

int pl_timer_set(pl_timer_handle timer, uint32_t milliseconds) {
  timerInterval = milliseconds;
  return timer == 1 ? 0 : -1;
}

void pl_timer_delete(pl_timer_handle timer) { EXPECT(timer == 1); }

void pl_fd_watcher_delete(pl_fd_watcher_handle watcher) { EXPECT(watcher != 0); }

/* The board: one PSoC. */

static const char kTopology[] =
    "[{\"type\": \"I2C\", \"ham\": \"NimboSmbus\", \"id\": 1, \"devices\": ["
    "{\"did\": 3, \"label\": \"PSoC\", \"driver\": null, \"address\": {\"address\": 80}}]}]";

#define PSOC(args)                                                                             \
  "{\"name\": \"psoc\", \"did\": 3, \"driver\": \"HalvorsaPsoc\", \"address\": {\"address\": " \
  "80}, \"driverArgs\": {" args "}}"

static const char kFan1[] =
    PSOC("\"fanId\": 1, \"maxRpm\": 23000, \"registerOffset\": 0, \"pwmMaster\": true");
static const char kFan4[] = PSOC("\"fanId\": 4, \"maxRpm\": 23000, \"registerOffset\": 2");
static const char kSensor[] = PSOC("\"sensorId\": 1, \"register\": 37");

static void* library;

/* ISO C has no cast between data and function pointers; POSIX promises that they are alike. */
static void function(void* pointer, size_t size, const char* name) {
  void* const address = dlsym(library, name);
  EXPECT(address != NULL && size == sizeof address);
  memcpy(pointer, &address, sizeof address);
}
#define FUNCTION(pointer, name) function(&(pointer), sizeof(pointer), name)

static void fans(void) {
  pl_fan* (*add)(const char*);
  FUNCTION(add, "pl_fan_add");
  pl_fan* const first = add(kFan1);
  pl_fan* const fourth = add(kFan4);
  EXPECT(first != NULL && fourth != NULL && first != fourth);
  EXPECT(first->ops == fourth->ops);
  EXPECT(first->ops->size == sizeof(pl_fan_ops));
  EXPECT(first->ops->debug_info != NULL);

  int rpm = 0;
  EXPECT(first->ops->get_rpm(first, &rpm) == PL_STATUS_OK && rpm == 8190);
  EXPECT(fourth->ops->get_rpm(fourth, &rpm) == PL_STATUS_OK && rpm == 22271);
  EXPECT(first->ops->set_rpm(first, 20000) == PL_STATUS_OK);

  EXPECT(timerInterval == 1000);
  timerCallback(timerContext);
  EXPECT(fourth->ops->get_rpm(fourth, &rpm) == PL_STATUS_FAULT && rpm == 22271);
  EXPECT(first->ops->get_rpm(first, &rpm) == PL_STATUS_OK && rpm == 8190);
}

static void sensors(void) {
  pl_temp_sensor* (*add)(const char*, float, float);
  FUNCTION(add, "pl_temp_sensor_add");
  pl_temp_sensor* const sensor = add(kSensor, 65.0f, 80.0f);
  EXPECT(sensor != NULL);
  EXPECT(sensor->ops->size == sizeof(pl_temp_sensor_ops));
  EXPECT(sensor->ops->reserved == NULL);
  float celsius = 0;
  EXPECT(sensor->ops->get_temperature(sensor, &celsius) == PL_STATUS_OK);
  EXPECT(celsius > 37.5f && celsius < 38.5f);
}

static void board(void) {
  pl_system* (*add)(const char*);
  FUNCTION(add, "pl_system_add");
  pl_system* const system = add("board");
  EXPECT(system != NULL && system->host == 0);
  EXPECT(system->ops->size == sizeof(pl_system_ops));
  EXPECT(system->ops->poweroff != NULL && system->ops->powercycle != NULL);
  EXPECT(system->ops->reserved == NULL);
  EXPECT(system->ops->get_reload_cause(system, NULL, NULL, NULL) == PL_STATUS_UNSUPPORTED);
  free(system);
}

int main(int argc, char** argv) {
  char directory[] = "/tmp/nimbo-c-host-XXXXXX";
  if (argc != 2 || mkdtemp(directory) == NULL) {
    fprintf(stderr, "usage: %s LIBRARY (and /tmp must be writable)\n", argv[0]);
    return 2;
  }
  setenv("SIMULATION_VMID", "1", 1);
  setenv("NIMBOLIB_SIMDIR", directory, 1);
  library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  pl_status (*init)(const char*);
  FUNCTION(init, "pl_system_init");
  EXPECT(init(kTopology) == PL_STATUS_OK);
  fans();
  sensors();
  board();
  EXPECT(traceLines > 0);

  char file[sizeof directory + sizeof "/HalvorsaPsoc-psoc"];
  snprintf(file, sizeof file, "%s/HalvorsaPsoc-psoc", directory);
  EXPECT(remove(file) == 0);
  EXPECT(remove(directory) == 0);
  return failures == 0 ? 0 : 1;
}
