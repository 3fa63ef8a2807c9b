// Placeholder until the shell sources land.
