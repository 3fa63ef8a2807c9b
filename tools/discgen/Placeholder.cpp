// placeholder until the generator lands
