// Nothing: what loading any library costs.
