/* GTK 3: an undecorated white window and a GLib timeout. */
#include <gtk/gtk.h>

#include "Benchmarks/OnScreen/Programs/timestamps.h"

static Arguments arguments;

static gboolean tick(gpointer data) {
  record_tick();
  if (tick_count >= arguments.ticks) {
    hide_start = read_clock();
    gtk_widget_destroy(GTK_WIDGET(data));
    gtk_main_quit();
    return G_SOURCE_REMOVE;
  }
  return G_SOURCE_CONTINUE;
}

static gboolean draw(GtkWidget* widget, cairo_t* cairo, gpointer data) {
  (void)widget;
  (void)data;
  cairo_set_source_rgb(cairo, 1, 1, 1);
  cairo_paint(cairo);
  return TRUE;
}

static GtkWidget* show_window(int x, int y, int width, int height) {
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_decorated(GTK_WINDOW(window), FALSE);
  gtk_window_set_type_hint(GTK_WINDOW(window), GDK_WINDOW_TYPE_HINT_SPLASHSCREEN);
  gtk_window_set_default_size(GTK_WINDOW(window), width, height);
  gtk_widget_set_app_paintable(window, TRUE);
  g_signal_connect(window, "draw", G_CALLBACK(draw), NULL);
  gtk_window_move(GTK_WINDOW(window), x, y);
  gtk_widget_show(window);
  return window;
}

static gboolean quit_loop(gpointer data) {
  (void)data;
  gtk_main_quit();
  return G_SOURCE_REMOVE;
}

static void run_loop(guint milliseconds) {
  g_timeout_add(milliseconds, quit_loop, NULL);
  gtk_main();
}

static void show_first_window(void) {
  GtkWidget* window = show_window(FIRST_X, FIRST_Y, FIRST_WIDTH, FIRST_HEIGHT);
  run_loop(FIRST_MILLISECONDS);
  gtk_widget_destroy(window);
  run_loop(PAUSE_MILLISECONDS);
}

int main(int argc, char** argv) {
  GtkWidget* window;
  arguments = parse_arguments(argc, argv);
  if (arguments.mode != MODE_COLD) {
    gtk_init(NULL, NULL);
    show_first_window();
  }
  show_start = read_clock();
  if (arguments.mode == MODE_COLD) {
    gtk_init(NULL, NULL);
  }
  window = show_window(arguments.x, arguments.y, arguments.width, arguments.height);
  show_end = read_clock();
  g_timeout_add(100, tick, window);
  gtk_main();
  while (gtk_events_pending()) {
    gtk_main_iteration();
  }
  print_timestamps();
  return 0;
}
