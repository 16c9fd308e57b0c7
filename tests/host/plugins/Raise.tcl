load Ramp
