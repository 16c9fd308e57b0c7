load Recorder
